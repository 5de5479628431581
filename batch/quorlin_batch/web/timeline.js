// A row for each playlist, a cell for each segment, coloured by its worst finding; under it the curves of the chosen row. Only what
// is in sight is drawn: ten thousand segments cost no more than a screen of them.
const SVG = "http://www.w3.org/2000/svg";
const WORST = ["failed", "incomplete", "advice", "accepted", "note", "fine"];
const PAD = 14, ROW = 22, GAP = 6, LABEL = 16, MIN_CELL = 3;

function svg(name, attributes = {}, ...children) {
  const made = document.createElementNS(SVG, name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

// The rows with the place of each segment on the time line, in seconds.
function makeRows(data, playlists, findings) {
  return data.rows.map(({playlist, segments}) => {
    const facts = playlists.get(playlist) || {};
    let now = 0;
    const made = segments.map(([name, line, extinf, bytes, start, discontinuity, container, init, streams, found, measured, offset]) => {
      const worst = Math.min(WORST.length - 1, ...found.map(([index]) => WORST.indexOf(findings[index].level)));
      const length = init ? 0 : extinf ?? measured ?? 1;
      const segment = {name, line, extinf, bytes, start, discontinuity, container, init, streams, found, measured, offset, from: now, to: now + length, worst};
      now += length;
      return segment;
    });
    const label = [playlist || "the series", describePlaylist(facts)].filter(Boolean).join(" · ");
    return {playlist, facts, label, segments: made, length: now};
  });
}

function showTimeline(container, rows, choose) {
  const length = Math.max(...rows.map(row => row.length), 0.001);
  const most = Math.max(...rows.map(row => row.segments.length));
  const view = {zoom: 1, row: rows.findIndex(row => row.segments.some(segment => segment.worst < 2)), segment: null};
  if (view.row < 0) view.row = 0;
  const rowsHeight = rows.length * (ROW + LABEL + GAP);
  const drawing = svg("svg", {role: "img", "aria-label": "segments of each playlist, and curves of one", tabindex: "0"});
  const spacer = element("div", {className: "spacer"});
  const scroller = element("div", {id: "timeline", className: "scroller"}, element("div", {className: "window"}, drawing), spacer);
  const readout = element("output", {className: "facts readout"});
  const button = (label, title, action) => {
    const made = element("button", {type: "button", title, className: "plain"}, label);
    made.addEventListener("click", action);
    return made;
  };
  const tools = element("div", {className: "tools zoom"}, button("fit", "the whole time line", () => zoom(1)), button("−", "zoom out", () => zoom(view.zoom / 2)),
    button("+", "zoom in", () => zoom(view.zoom * 2)), legend(rows), readout);
  container.append(tools, scroller);

  const width = () => scroller.clientWidth;
  const scale = () => (width() - 2 * PAD) * view.zoom / length;
  const left = () => scroller.scrollLeft;
  const x = seconds => PAD + seconds * scale() - left();

  function zoom(factor) {
    const middle = (left() + width() / 2) / (width() * view.zoom);
    view.zoom = Math.min(Math.max(1, factor), Math.max(1, most / 4));
    spacer.style.width = width() * view.zoom + "px";
    scroller.scrollLeft = middle * width() * view.zoom - width() / 2;
    draw();
  }

  // First segment that ends after a time.
  function find(row, seconds) {
    let low = 0, high = row.segments.length - 1;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (row.segments[middle].to > seconds) high = middle;
      else low = middle + 1;
    }
    return low;
  }

  function visible(row) {
    const first = find(row, (left() - 2 * PAD) / scale()), last = find(row, (left() + width()) / scale());
    return row.segments.slice(Math.max(0, first - 1), last + 1);
  }

  // Neighbours too narrow to be seen are one cell, with the worst of their colours.
  function cells(row, y) {
    const drawn = [];
    let from = 0, to = -1, worst = 0;
    const flush = () => {
      if (to >= from) drawn.push(svg("rect", {x: from.toFixed(1), y, width: Math.max(1, to - from - (to - from > 4 ? 1 : 0)).toFixed(1), height: ROW, class: "cell " + WORST[worst]}));
      to = -1;
    };
    for (const segment of visible(row)) {
      const start = segment.init ? x(segment.from) - 9 : x(segment.from), end = segment.init ? start + 7 : x(segment.to);
      if (segment.init || to < from || to - from >= MIN_CELL) {
        flush();
        [from, to, worst] = [start, end, segment.worst];
      } else {
        [to, worst] = [end, Math.min(worst, segment.worst)];
      }
      if (segment.init) flush();
    }
    flush();
    return drawn;
  }

  function drawRow(row, index) {
    const y = index * (ROW + LABEL + GAP) + LABEL;
    const group = svg("g", {}, svg("text", {x: 4, y: y - 4, class: index === view.row ? "label chosen" : "label"}, row.label), ...cells(row, y));
    const chosen = view.segment;
    if (chosen && row.segments.includes(chosen)) {
      const from = chosen.init ? x(chosen.from) - 9 : x(chosen.from), to = chosen.init ? from + 7 : x(chosen.to);
      group.append(svg("rect", {x: from - 1, y: y - 1, width: Math.max(4, to - from + 1), height: ROW + 2, class: "mark-chosen"}));
    }
    return group;
  }

  function draw() {
    const charts = chartsOf(rows[view.row], rows);
    const height = rowsHeight + AXIS + charts.length * CHART;
    drawing.setAttribute("viewBox", `0 0 ${width()} ${height}`);
    drawing.style.height = height + "px";
    scroller.style.height = height + 18 + "px";
    const shown = visible(rows[view.row]).filter(segment => !segment.init);
    drawing.replaceChildren(...rows.map(drawRow), drawAxis(rowsHeight, width(), x, scale(), left()),
      ...charts.map((chart, index) => drawChart(chart, shown, rowsHeight + AXIS + index * CHART, width(), x)));
  }

  function at_(event) {
    const box = drawing.getBoundingClientRect();
    const index = Math.floor((event.clientY - box.top) / (ROW + LABEL + GAP));
    const row = index < rows.length ? index : view.row;
    const place = event.clientX - box.left, seconds = (place - PAD + left()) / scale();
    const init = rows[row].segments.find(segment => segment.init && place >= x(segment.from) - 10 && place < x(segment.from) - 1);
    const segment = init || rows[row].segments[find(rows[row], seconds)];
    return {row, segment};
  }

  function pick(row, segment) {
    Object.assign(view, {row, segment});
    if (segment) choose(rows[row], segment);
    draw();
  }

  drawing.addEventListener("click", event => { const {row, segment} = at_(event); pick(row, segment); });
  drawing.addEventListener("mousemove", event => { const {row, segment} = at_(event); readout.textContent = describeSegment(rows[row], segment); });
  drawing.addEventListener("keydown", event => {
    const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
    if (!step) return;
    const all = rows[view.row].segments, index = all.indexOf(view.segment);
    const segment = all[Math.min(all.length - 1, Math.max(0, index + step))];
    scroller.scrollLeft += x(segment.from) < 0 || x(segment.to) > width() ? x(segment.from) - width() / 2 : 0;
    pick(view.row, segment);
    event.preventDefault();
  });
  let waiting = false;
  scroller.addEventListener("scroll", () => {
    if (!waiting) requestAnimationFrame(() => { waiting = false; draw(); });
    waiting = true;
  });
  new ResizeObserver(() => zoom(view.zoom)).observe(scroller);
  addEventListener("beforeprint", () => zoom(1));
  const bad = rows[view.row].segments.find(segment => segment.worst < 2);
  pick(view.row, bad || null);
}

function legend(rows) {
  const seen = new Set(rows.flatMap(row => [...new Set(row.segments.map(segment => segment.worst))]));
  const words = {...LEVEL_WORDS, fine: "nothing found"};
  return element("span", {className: "legend"}, ...[...seen].sort().map(worst =>
    element("span", {}, element("i", {className: "cell " + WORST[worst]}), " " + words[WORST[worst]])));
}

function describeSegment(row, segment) {
  if (!segment) return "";
  const length = segment.extinf || segment.measured;
  return [segment.name, segment.extinf !== null ? `EXTINF ${segment.extinf}` : "", segment.measured !== null ? `measured ${segment.measured.toFixed(3)} s` : "",
    length ? bits(segment.bytes * 8 / length) : "", segment.offset !== null ? `audio − video ${segment.offset.toFixed(0)} ms` : "",
    segment.found.length ? plural(segment.found.reduce((sum, [, count]) => sum + count, 0), "finding") : ""].filter(Boolean).join(" · ");
}
