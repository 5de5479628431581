// The page of one asset: what was found, where, and what was validated.
const data = JSON.parse(at("data").textContent);
const known = typeof STANDING === "undefined" ? null : STANDING.assets[data.asset];
const told = typeof EXPLANATIONS === "undefined" ? {} : EXPLANATIONS;
const standing = known || {state: data.state, reason: data.reason, accepted: {}, new: [], gone: []};
const home = document.querySelector("link").getAttribute("href").replace("pages/style.css", "index.html");
const LEVEL_WORDS = {failed: "fails", incomplete: "left out", advice: "advice", note: "note", accepted: "accepted"};
const TICKS = 90000;

const findings = data.findings.map((finding, index) => {
  const accepted = standing.accepted[index];
  const level = accepted !== undefined ? "accepted" : finding.fails ? "failed" : finding.unvalidated ? "incomplete"
    : finding.kind === "advice" ? "advice" : "note";
  return {...finding, index, level, accepted, fresh: standing.new.includes(finding.id)};
});
const playlists = new Map(data.playlists.map(facts => [facts.playlist, facts]));

const seconds = ticks => (ticks / TICKS).toFixed(3) + " s";
const bits = value => value >= 1e6 ? (value / 1e6).toFixed(2) + " Mbit/s" : (value / 1e3).toFixed(0) + " kbit/s";

// File, byte, stream and time of a finding, as far as they are known.
function placeText({line, segment, file, offset, stream, time}) {
  return [line ? `line ${line}` : "", segment || file || "", offset !== undefined && offset !== null ? `byte ${number(offset)}` : "",
    stream !== undefined && stream !== null ? `stream ${stream}` : "", time !== undefined && time !== null ? "time stamp " + seconds(time) : ""].filter(Boolean).join(", ");
}

function levelMark(level) {
  const made = element("span", {className: "level"}, LEVEL_WORDS[level]);
  made.style.color = level === "note" ? "var(--soft)" : `var(--${level})`;
  return made;
}

function findingHead(finding, count) {
  return element("div", {className: "found"}, levelMark(finding.level), element("span", {className: "code"}, element("b", {}, finding.id), " ", finding.text),
    element("span", {className: "number"}, number(count) + " ×"));
}

function findingItem(finding) {
  const item = element("li", {}, findingHead(finding, finding.count));
  const first = placeText(finding.first), last = finding.last ? placeText(finding.last) : "";
  const places = first === last || !last ? first : `first: ${first} · last: ${last}`;
  const facts = [places, finding.repeated ? `${number(finding.repeated)} of them listed again for what the first place raised` : "",
    finding.accepted ? "accepted: " + finding.accepted : "", finding.fresh ? "new since the last time" : ""];
  item.append(element("div", {className: "facts"}, facts.filter(Boolean).join(" · ")));
  if (told[finding.id]) item.append(element("details", {}, element("summary", {className: "facts"}, "what it means, and the fix"), explanation(told[finding.id])));
  return item;
}

// What a person calls a playlist: its name in the master playlist.
function describePlaylist(facts) {
  if (!facts) return "";
  const parts = [facts.master ? "master playlist" : "", facts.group_id ? `group ${facts.group_id}` : "", facts.name, facts.language, facts.codecs, facts.resolution,
    facts.bandwidth ? bits(facts.bandwidth) : "", facts.playlist_type, facts.key_method ? `encrypted: ${facts.key_method}` : ""];
  return parts.filter(Boolean).join(" · ");
}

function showHead(main) {
  document.title = `quorlin: ${data.asset}`;
  const link = (file, label) => element("a", {href: file}, label);
  main.append(element("header", {}, element("p", {}, element("a", {href: home}, "← all assets")), element("h1", {className: "name"}, data.asset),
    element("p", {className: "state"}, badge(standing.state), standing.reason ? element("span", {}, " " + standing.reason) : ""),
    element("p", {}, `${moment(data.started)} on ${data.host} · ${duration(data.seconds)} · ${plural(data.attempts, "run")} · ${data.quorlin}`),
    element("p", {}, link("report.txt", "report"), " · ", ...(data.stderr ? [link("stderr.txt", "standard error"), " · "] : []), link("result.json", "result"))));
}

function section(main, title, ...children) {
  const made = element("section", {}, element("h2", {}, title), ...children);
  main.append(made);
  return made;
}

function showFindings(main) {
  const made = section(main, findings.length ? "Findings" : "No findings");
  const names = [...new Set(findings.map(finding => finding.playlist))];
  for (const name of names) {
    const own = findings.filter(finding => finding.playlist === name);
    made.append(element("h3", {className: "code"}, name || "the whole run"), element("p", {className: "facts"}, describePlaylist(playlists.get(name))),
      element("ul", {className: "findings"}, ...own.map(findingItem)));
  }
  if (data.more_findings) made.append(element("p", {}, `and ${plural(data.more_findings, "finding")} that are not kept here: see the report`));
  if (standing.gone.length) made.append(element("h3", {}, "Gone since the last time"),
    element("ul", {}, ...standing.gone.map(finding => element("li", {className: "code"}, element("b", {}, finding.id), " ", finding.text))));
}

function showInventory(main) {
  const head = ["Playlist", "Stream", "Codec", "Channels", "Duration", "Bit rate", "Segments", "Packets, samples or frames"];
  const rows = data.inventory.map(stream => {
    const rate = stream.seconds ? bits(stream.payload_bytes * 8 / stream.seconds) : "";
    return element("tr", {}, ...[stream.playlist || "", stream.id === null ? "" : stream.id, stream.codec, stream.channels || "", duration(stream.seconds),
      stream.data_rate_kbps ? `${rate} (${stream.data_rate_kbps} kbit/s coded)` : rate, number(stream.segments), number(stream.units)]
      .map((text, column) => element("td", {className: column > 3 ? "number" : "code"}, String(text))));
  });
  const table = element("table", {}, element("thead", {}, element("tr", {}, ...head.map((text, column) =>
    element("th", {scope: "col", className: column > 3 ? "number" : ""}, text)))), element("tbody", {}, ...rows));
  section(main, "What was validated", rows.length ? element("div", {className: "wide"}, table) : element("p", {}, "No stream was read."));
}

function showSegment(panel, row, segment) {
  const facts = [segment.name, segment.line ? `line ${segment.line}` : "", segment.init ? "EXT-X-MAP" : "", segment.extinf !== null ? `EXTINF ${segment.extinf}` : "",
    segment.measured !== null ? `measured ${segment.measured.toFixed(3)} s` : "", `${number(segment.bytes)} bytes`,
    segment.start !== null ? `from byte ${number(segment.start)}` : "", segment.container || "no content"];
  const items = segment.found.map(([index, count, places]) => element("li", {}, findingHead(findings[index], count),
    ...places.map(([offset, stream, time, text]) => element("div", {className: "facts"}, placeText({segment: segment.name, offset, stream, time}),
      text ? element("span", {className: "code"}, " " + text) : "")), count > places.length ? element("div", {className: "facts"}, "…") : ""));
  panel.replaceChildren(element("h3", {className: "code"}, segment.name), element("p", {className: "facts"}, row.label + " · " + facts.slice(1).filter(Boolean).join(" · ")),
    items.length ? element("ul", {className: "findings"}, ...items) : element("p", {}, "Nothing was found in this segment."));
  panel.hidden = false;
}

const main = element("main");
document.body.append(main);
showHead(main);
if (data.rows.length) {
  const panel = element("div", {id: "segment", hidden: true});
  showTimeline(section(main, "Timeline"), makeRows(data, playlists, findings), (row, segment) => showSegment(panel, row, segment));
  at("timeline").after(panel);
}
showFindings(main);
showInventory(main);
