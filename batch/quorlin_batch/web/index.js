const data = JSON.parse(at("data").textContent);
const CHUNK = 200, FIRST_FINDINGS = 6, FIRST_SETS = 5;
const IDS = data.ids.map(([id, kind, text, paragraphs]) => ({id, kind, text, paragraphs}));
const SETS = data.sets.map(([state, reason, ids, assets]) => ({state, reason, ids, assets}));

// The report of an asset lies below assets/, named by its path; names that cannot be told from what is shown have theirs given.
const folder = "assets" + (data.root === "/" ? "" : data.root);
const quoted = path => path.split("/").map(encodeURIComponent).join("/");

const assets = data.assets.map(([name, set, text, total, seconds, report, fresh, gone, accepted, advice]) => {
  const {state, reason, ids} = SETS[set];
  const haystack = [name, reason, data.texts[text] || "", ...ids.map(index => IDS[index].id)].join("\n").toLowerCase();
  return {name, set, state, reason, ids, text: data.texts[text], total, seconds, fresh: fresh || [], gone: gone || [],
    accepted: accepted || 0, advice: advice || [], haystack, report: report === 0 ? quoted(folder + "/" + name) : report};
});

// What is shown: kept in the address, so that a view can be linked to and survives a reload.
const EMPTY = {states: new Set(), query: "", finding: "", set: -1, change: ""};
const view = {...EMPTY, sort: "state", down: true};
const ORDER = {
  state: (a, b) => a.state - b.state || a.total - b.total,
  name: (a, b) => a.name < b.name ? -1 : a.name > b.name ? 1 : 0,
  findings: (a, b) => a.total - b.total,
  time: (a, b) => a.seconds - b.seconds,
};

function readAddress() {
  const parameters = new URLSearchParams(location.hash.slice(1));
  view.states = new Set((parameters.get("state") || "").split(",").map(state => data.states.indexOf(state)).filter(index => index >= 0));
  view.query = parameters.get("q") || "";
  view.finding = parameters.get("finding") || "";
  view.change = parameters.get("change") || "";
  view.set = parameters.has("set") ? Number(parameters.get("set")) : -1;
  const sort = parameters.get("sort") || "-state";
  view.down = sort.startsWith("-");
  view.sort = sort.replace("-", "") in ORDER ? sort.replace("-", "") : "state";
}

function writeAddress() {
  const parameters = new URLSearchParams();
  if (view.states.size) parameters.set("state", [...view.states].map(index => data.states[index]).join(","));
  if (view.query) parameters.set("q", view.query);
  if (view.finding) parameters.set("finding", view.finding);
  if (view.change) parameters.set("change", view.change);
  if (view.set >= 0) parameters.set("set", view.set);
  if (view.sort !== "state" || !view.down) parameters.set("sort", (view.down ? "-" : "") + view.sort);
  history.replaceState(null, "", "#" + parameters);
}

let chosen = [], rendered = 0;

const CHANGES = {
  new: asset => asset.fresh.length > 0,
  gone: asset => asset.gone.length > 0,
};

function choose() {
  const words = view.query.toLowerCase().split(" ").filter(Boolean);
  const finding = IDS.findIndex(entry => entry.id === view.finding);
  chosen = assets.filter(asset => (view.states.size === 0 || view.states.has(asset.state))
    && (!view.finding || asset.ids.includes(finding) || asset.advice.includes(finding))
    && (view.set < 0 || asset.set === view.set)
    && (!view.change || (CHANGES[view.change] || (() => false))(asset))
    && words.every(word => asset.haystack.includes(word)));
  const sign = view.down ? -1 : 1;
  chosen.sort((a, b) => sign * ORDER[view.sort](a, b) || ORDER.name(a, b));
}

function findingItem(index, className = "") {
  const {id, text, paragraphs} = IDS[index];
  return element("li", {className}, element("div", {className: "code"}, element("b", {}, id), " ", text), explanation(paragraphs));
}

function details(asset) {
  const made = element("div");
  if (asset.ids.length) made.append(element("ul", {}, ...asset.ids.map(index => findingItem(index))));
  const changes = [[asset.advice, "advice: "], [asset.fresh, "new since the last time: "], [asset.gone, "gone since the last time: "]];
  for (const [ids, words] of changes)
    if (ids.length) made.append(element("p", {className: "facts"}, words + ids.map(index => IDS[index].id).join(", ")));
  const link = (file, label) => element("a", {href: asset.report + "/" + file}, label);
  if (asset.report) made.append(element("div", {className: "facts"}, link("index.html", "timeline and places"), " · ", link("report.txt", "report"), " · ", link("result.json", "result")));
  return made;
}

function foundCell(asset) {
  const cell = element("td");
  if (asset.reason) cell.append(element("div", {}, asset.reason));
  const others = asset.ids.length - (asset.text ? 1 : 0);
  const notes = [others > 0 ? "and " + plural(others, "other finding") : "", asset.accepted ? plural(asset.accepted, "accepted finding") : "",
    asset.advice.length ? "advice" : "",
    asset.fresh.length ? `${number(asset.fresh.length)} new` : "", asset.gone.length ? `${number(asset.gone.length)} gone` : ""];
  const facts = notes.filter(Boolean).join(" · ");
  if (!asset.text && !facts) return cell;
  const head = element("summary", {}, element("span", {className: "code"}, asset.text || ""), element("span", {className: "facts"}, " " + facts));
  const made = element("details", {}, head);
  // The list is made when it is opened: thousands of rows stay light.
  made.addEventListener("toggle", () => {
    if (made.open && made.children.length === 1) made.append(details(asset));
  });
  cell.append(made);
  return cell;
}

function row(asset) {
  const name = asset.report ? element("a", {href: asset.report + "/index.html"}, asset.name) : asset.name;
  return element("tr", {}, element("td", {className: "verdict"}, badge(data.states[asset.state])), element("td", {className: "name"}, name),
    foundCell(asset), element("td", {className: "count number"}, asset.total ? number(asset.total) : ""),
    element("td", {className: "time number"}, asset.report ? duration(asset.seconds) : ""));
}

function renderMore(count) {
  const next = chosen.slice(rendered, rendered + count);
  at("rows").append(...next.map(row));
  rendered += next.length;
  at("more").hidden = rendered === chosen.length;
  at("more").textContent = `Show more (${number(chosen.length - rendered)} left)`;
}

const pressed = (container, test) => {
  for (const button of at(container).querySelectorAll("[data-key]")) button.ariaPressed = String(test(button.dataset.key));
};

function render() {
  choose();
  at("rows").replaceChildren();
  rendered = 0;
  renderMore(CHUNK);
  at("shown").textContent = chosen.length === assets.length ? plural(assets.length, "asset") : `${number(chosen.length)} of ${plural(assets.length, "asset")}`;
  at("clear").hidden = !view.query && !view.states.size && !view.finding && !view.change && view.set < 0;
  pressed("states", key => view.states.has(Number(key)));
  pressed("findings", key => view.finding === key);
  pressed("advice", key => view.finding === key);
  pressed("sets", key => view.set === Number(key));
  pressed("changes", key => view.change === key);
  for (const button of document.querySelectorAll("[data-sort]")) {
    if (button.dataset.sort === view.sort) button.parentElement.ariaSort = view.down ? "descending" : "ascending";
    else button.parentElement.removeAttribute("aria-sort");
  }
  if (at("search").value !== view.query) at("search").value = view.query;
}

function change(changes) {
  Object.assign(view, changes);
  writeAddress();
  render();
}

function showHead() {
  const {assets: count, passed, accepted} = data.totals;
  const good = passed + accepted;
  at("headline").textContent = (good === count ? `All ${plural(count, "asset")} passed` : `${number(good)} of ${plural(count, "asset")} passed`)
    + (accepted ? `, ${number(accepted)} of them with accepted findings` : "");
  at("root").textContent = data.root;
  at("facts").textContent = `${moment(data.started)} on ${data.host} · ${number(data.validated_now)} validated in ${duration(data.seconds)} · ${data.quorlin}`;
  const problems = [...(data.interrupted ? ["The batch was interrupted: start it again with the same folder, it goes on where it ended."] : []), ...data.problems];
  at("problems").hidden = problems.length === 0;
  at("problems").append(...problems.map(problem => element("p", {}, problem)));
  at("notes").hidden = data.notes.length === 0;
  at("notes").append(...data.notes.map(note => element("p", {}, note)));
}

function filterButton(key, label, action) {
  const button = element("button", {type: "button"}, ...label);
  button.dataset.key = key;
  button.addEventListener("click", action);
  return button;
}

function showStates() {
  at("bar").ariaLabel = data.states.map(state => `${TITLES[state]} ${number(data.totals[state])}`).join(", ");
  data.states.forEach((state, index) => {
    const count = data.totals[state];
    if (count === 0) return;
    const part = element("span", {title: `${TITLES[state]}: ${number(count)}`});
    part.style.background = `var(--${state})`;
    part.style.flex = `${count} 0 0`;
    at("bar").append(part);
    const label = [element("b", {}, number(count)), element("small", {}, badge(state))];
    at("states").append(filterButton(index, label, () => {
      const states = new Set(view.states);
      states.delete(index) || states.add(index);
      change({states});
    }));
  });
}

// The rest of a long list waits for its button.
function showList(list, buttons, first, more) {
  at(list).append(...buttons);
  buttons.forEach((button, index) => button.hidden = index >= first);
  at(more).hidden = buttons.length <= first;
  at(more).textContent = `Show all ${buttons.length}`;
  at(more).addEventListener("click", () => {
    for (const button of buttons) button.hidden = false;
    at(more).hidden = true;
  });
}

// A finding, how often it was found and in how many assets; and its explanation.
function frequentItem([index, count, among], most) {
  const {id, text, paragraphs} = IDS[index];
  const width = element("i");
  width.style.width = Math.max(2, 100 * among / most) + "%";
  const button = filterButton(id, [element("span", {className: "code"}, element("b", {}, id), " ", text),
    element("span", {className: "number"}, number(count) + " ×"), element("span", {className: "number"}, plural(among, "asset"), width)],
    () => change({finding: view.finding === id ? "" : id}));
  button.className = "finding";
  const made = element("div", {}, button);
  if (paragraphs) made.append(element("details", {className: "why"}, element("summary", {}, "what it means, and the fix"), explanation(paragraphs)));
  return made;
}

function showFrequent(all, part, list, more) {
  at(part).hidden = all.length === 0;
  showList(list, all.map(each => frequentItem(each, all[0][2])), FIRST_FINDINGS, more);
}

function showSets() {
  const bad = SETS.map((set, index) => ({...set, index})).filter(set => set.assets > 1 && (set.ids.length > 0 || set.reason));
  bad.sort((a, b) => b.assets - a.assets || b.state - a.state);
  at("equal").hidden = bad.length === 0;
  showList("sets", bad.map(set => {
    const button = filterButton(set.index, [badge(data.states[set.state]), element("span", {className: "code"}, set.ids.map(index => IDS[index].id).join(", ") || set.reason),
      element("span", {className: "number"}, plural(set.assets, "asset"))], () => change({set: view.set === set.index ? -1 : set.index}));
    button.className = "finding";
    return button;
  }), FIRST_SETS, "all-sets");
}

function showSince() {
  const since = data.since;
  at("since").hidden = !since;
  if (!since) return;
  at("since-title").textContent = `Since ${moment(since.started)}`;
  for (const [key, words] of [["new", "new finding"], ["gone", "finding gone"], ["", "finding as before"]]) {
    const count = key ? since[key] : since.same;
    const label = [element("b", {}, number(count)), element("small", {}, words.replace("finding", count === 1 ? "finding" : "findings"))];
    if (!key) at("changes").append(element("div", {className: "figure"}, ...label));
    else at("changes").append(filterButton(key, label, () => change({change: view.change === key ? "" : key})));
  }
  const verdicts = since.states.map(([before, now, count]) => `${plural(count, "asset")}: ${TITLES[before]} → ${TITLES[now]}`);
  if (since.added) verdicts.push(`${plural(since.added, "asset")} not there before`);
  if (since.removed) verdicts.push(`${plural(since.removed, "asset")} no longer there`);
  at("verdict-changes").append(...verdicts.map(text => element("p", {}, text)));
}

function showAccepted() {
  const accepted = data.accepted;
  at("accepted").hidden = !accepted;
  if (!accepted) return;
  at("accepted-facts").textContent = `${plural(accepted.findings, "finding")} of ${plural(accepted.assets, "asset")} accepted by ${accepted.file}`;
  at("accepted-entries").append(...accepted.entries.map(entry => element("li", {className: entry.problem ? "stale" : ""},
    element("span", {className: "code"}, `line ${entry.line}: ${entry.id}${entry.assets ? " " + entry.assets : ""}`),
    element("span", {className: "facts"}, ` ${[entry.problem || plural(entry.matched, "asset"), entry.until ? "until " + entry.until : "", entry.why].filter(Boolean).join(" · ")}`))));
}

showHead();
showStates();
showSince();
showAccepted();
showFrequent(data.frequent, "frequent", "findings", "all-findings");
showFrequent(data.advice, "advised", "advice", "all-advice");
showSets();
readAddress();
render();
at("search").addEventListener("input", event => change({query: event.target.value}));
at("clear").addEventListener("click", () => change({...EMPTY, states: new Set()}));
at("more").addEventListener("click", () => renderMore(CHUNK));
for (const button of document.querySelectorAll("[data-sort]")) button.addEventListener("click", () => {
  const sort = button.dataset.sort;
  change({sort, down: view.sort === sort ? !view.down : sort !== "name"});
});
addEventListener("hashchange", () => { readAddress(); render(); });
addEventListener("beforeprint", () => renderMore(chosen.length));
new IntersectionObserver(entries => {
  if (entries[0].isIntersecting && rendered > 0 && rendered < chosen.length) renderMore(CHUNK);
}, {rootMargin: "600px"}).observe(at("more"));
