"use strict";
// What the pages share. Every text goes in as text, never as markup.
const MARKS = {passed: "✓", accepted: "✓", incomplete: "◐", failed: "✗", nothing_validated: "∅", no_verdict: "?", not_run: "…"};
const TITLES = {passed: "passed", accepted: "accepted", incomplete: "passed in part", failed: "failed", nothing_validated: "nothing validated",
  no_verdict: "no verdict", not_run: "not yet run"};
const at = id => document.getElementById(id);
const number = value => value.toLocaleString("en");
const plural = (count, word) => number(count) + " " + word + (count === 1 ? "" : "s");

function element(name, properties = {}, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}

function badge(state) {
  const made = element("span", {className: "badge", title: TITLES[state]},
    element("span", {className: "mark", ariaHidden: "true"}, MARKS[state]), element("span", {}, TITLES[state]));
  made.style.color = `var(--${state})`;
  return made;
}

function duration(seconds) {
  if (seconds < 1) return (seconds * 1000).toFixed(0) + " ms";
  if (seconds < 120) return seconds.toFixed(1) + " s";
  return seconds < 7200 ? (seconds / 60).toFixed(0) + " min" : (seconds / 3600).toFixed(1) + " h";
}

const moment = text => text ? text.replace("T", " ").replace("Z", " UTC") : "";

// An explanation is paragraphs; nothing for an id that has none.
function explanation(paragraphs) {
  return element("div", {className: "explanation"}, ...(paragraphs || []).map(text => element("p", {}, text)));
}
