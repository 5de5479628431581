// The curves under the time line: each a step per segment, with lines for what the playlists promise.
const AXIS = 26, CHART = 130, TOP = 22, BOTTOM = 8;

function chartsOf(row) {
  const facts = row.facts;
  const rate = segment => (segment.extinf || segment.measured) ? segment.bytes * 8 / (segment.extinf || segment.measured) : null;
  const charts = [
    {title: "Segment duration", unit: value => value.toFixed(2) + " s", from: null,
      curves: [["EXTINF", "second", segment => segment.extinf], ["measured", "first", segment => segment.measured]],
      lines: facts.target_duration ? [["EXT-X-TARGETDURATION", facts.target_duration]] : []},
    {title: "Bit rate", unit: bits, from: 0, curves: [["of each segment", "first", rate]],
      lines: [["BANDWIDTH", facts.bandwidth], ["AVERAGE-BANDWIDTH", facts.average_bandwidth]].filter(line => line[1])},
    {title: "Audio after video at the start of each segment" + (row.segments.some(segment => segment.offset !== null) && !row.facts.resolution && row.facts.group_id ? " (that of the first variant)" : ""), unit: value => value.toFixed(0) + " ms", from: null,
      curves: [["", "first", segment => segment.offset]], lines: []},
  ];
  return charts.filter(chart => chart.curves.some(([, , value]) => row.segments.some(segment => !segment.init && value(segment) !== null)));
}

// Ticks of the time line: hours, minutes and seconds.
function drawAxis(y, width, x, scale, left) {
  const steps = [1, 2, 5, 10, 30, 60, 120, 300, 600, 1800, 3600, 7200, 21600, 86400];
  const step = steps.find(seconds => seconds * scale > 80) || 86400;
  const group = svg("g", {class: "axis"});
  for (let now = Math.max(0, Math.floor(left / scale / step) * step); x(now) < width; now += step) {
    const clock = [Math.floor(now / 3600), Math.floor(now / 60) % 60, now % 60];
    const text = clock.map((part, index) => index ? String(part).padStart(2, "0") : String(part)).join(":");
    // At the right edge the time stands before its tick.
    const place = x(now) + 50 < width ? {x: x(now) + 3} : {x: x(now) - 3, "text-anchor": "end"};
    group.append(svg("line", {x1: x(now), x2: x(now), y1: y, y2: y + 5}), svg("text", {...place, y: y + 15}, text));
  }
  return group;
}

// The bounds of what is in sight, with room above and below.
function boundsOf(chart, segments) {
  let low = chart.from ?? Infinity, high = -Infinity;
  for (const segment of segments) for (const [, , value] of chart.curves) {
    const now = value(segment);
    if (now === null || now === undefined) continue;
    low = Math.min(low, now);
    high = Math.max(high, now);
  }
  for (const [, value] of chart.lines) high = Math.max(high, value);
  if (high === -Infinity) return null;
  const room = (high - low) * 0.12 || Math.max(Math.abs(high) * 0.1, 1);
  return {low: chart.from === null ? low - room : low, high: high + room};
}

function drawChart(chart, segments, y, width, x) {
  const group = svg("g", {class: "chart"}, svg("text", {x: 4, y: y + 14, class: "label"}, chart.title));
  const bounds = boundsOf(chart, segments);
  if (!bounds) return group;
  const top = y + TOP, height = CHART - TOP - BOTTOM;
  const place = value => top + height * (1 - (value - bounds.low) / (bounds.high - bounds.low));
  group.append(svg("line", {x1: 0, x2: width, y1: top + height, y2: top + height, class: "base"}));
  if (bounds.low < 0 && bounds.high > 0) group.append(svg("line", {x1: 0, x2: width, y1: place(0), y2: place(0), class: "base"}));
  for (const [, kind, value] of chart.curves) group.append(svg("path", {d: stepPath(segments, value, x, place), class: "curve " + kind}));
  chart.lines.forEach(([name, value], index) => group.append(svg("line", {x1: 0, x2: width, y1: place(value), y2: place(value), class: "promise"}),
    svg("text", {x: index ? 4 : width - 4, y: place(value) - 3, class: index ? "" : "end"}, `${name} ${chart.unit(value)}`)));
  const highest = Math.max(...segments.flatMap(segment => chart.curves.map(([, , value]) => value(segment) ?? -Infinity)));
  const lowest = Math.min(...segments.flatMap(segment => chart.curves.map(([, , value]) => value(segment) ?? Infinity)));
  const names = chart.curves.length > 1 ? ": measured (line) against EXTINF (area)" : "";
  if (highest > -Infinity) group.firstChild.textContent += `${names}, ${chart.unit(lowest)} to ${chart.unit(highest)}`;
  return group;
}

// One step per segment; of segments narrower than a pixel, their lowest and highest.
function stepPath(segments, value, x, place) {
  let path = "", column = null, low = 0, high = 0, open = false;
  const flush = () => {
    if (column !== null) path += `M${column} ${low.toFixed(1)}V${high.toFixed(1)}h1`;
    column = null;
  };
  for (const segment of segments) {
    const now = value(segment), from = x(segment.from), to = x(segment.to);
    if (now === null || now === undefined) { flush(); open = false; continue; }
    const y = place(now);
    if (to - from < 1) {
      if (column !== Math.floor(from)) { flush(); [column, low, high] = [Math.floor(from), y, y]; }
      [low, high] = [Math.min(low, y), Math.max(high, y)];
      open = false;
      continue;
    }
    flush();
    path += `${open ? "L" : "M"}${from.toFixed(1)} ${y.toFixed(1)}H${to.toFixed(1)}`;
    open = true;
  }
  flush();
  return path;
}
