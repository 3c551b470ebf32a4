// How the report looks.
#pragma once

namespace biseam::tool {

inline constexpr const char* kReportStyle = R"(
:root {
  color-scheme: light dark;
  --paper: #fbfaf8; --panel: #fff; --ink: #1d2126; --quiet: #5a626c; --line: #dcd9d3; --accent: #0b6e75;
  --c0: #1a78b4; --c1: #1f9e89; --c2: #b8860b; --c3: #d9600f; --c4: #cb2431; --wrong: #fff;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #14171a; --panel: #1c2024; --ink: #e8eaec; --quiet: #a0a8b1; --line: #333a41; --accent: #5cc6cd;
    --c0: #4aa8e0; --c1: #3cc4ad; --c2: #e3b341; --c3: #f0883e; --c4: #ff6b70;
  }
}
* { box-sizing: border-box }
body {
  margin: 0 auto; max-width: 82rem; padding: 2rem clamp(1rem, 3vw, 2.5rem) 4rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.55 system-ui, sans-serif;
}
h1 { margin: 0; font-size: 1.8rem; line-height: 1.2; letter-spacing: -.01em; overflow-wrap: anywhere }
h2 { margin: 3rem 0 .25rem; font-size: 1.25rem }
p { margin: .25rem 0 1rem; max-width: 68ch; color: var(--quiet) }
a { color: var(--accent) }
dl.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(11rem, 1fr)); gap: .75rem; margin: 1.5rem 0 0 }
dl.facts > div, .panel { padding: 1rem 1.1rem; background: var(--panel); border: 1px solid var(--line); border-radius: .6rem }
dt { color: var(--quiet); font-size: .875rem }
dd { margin: 0 }
dl.facts dd { font-size: 1.5rem; font-weight: 600; line-height: 1.3; font-variant-numeric: tabular-nums }
dl.facts dd small { display: block; font-size: .8125rem; font-weight: 400; color: var(--quiet) }
.two { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 24rem), 1fr)); gap: 1rem; align-items: start }
figure { margin: 0; min-width: 0 }
figcaption { margin: .4rem 0 0; color: var(--quiet); font-size: .875rem }
img { display: block; border-radius: .3rem }
.strips img { width: 100%; height: auto }
.strips h3 { margin: .75rem 0 .5rem; font-size: 1rem }
.strips figure + figure { margin-top: 1rem }
.full { overflow-x: auto; border-radius: .3rem }
.full img { max-width: none }
.full:focus-visible, summary:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px }
.over { position: relative; background: #000; border-radius: .3rem; overflow: hidden }
.over img { width: 100%; height: auto; opacity: .45 }
.over svg { position: absolute; inset: 0; width: 100%; height: 100% }
.over path, .over circle { fill: none; stroke-linecap: round }
.over .rim { stroke: #fff; stroke-dasharray: .8% .8%; opacity: .7 }
.over .wrong { stroke: #fff; opacity: .22 }
.over .c0 { stroke: #4aa8e0 } .over .c1 { stroke: #3cc4ad } .over .c2 { stroke: #e3b341 }
.over .c3 { stroke: #f0883e } .over .c4 { stroke: #ff6b70 }
ul.key { display: flex; flex-wrap: wrap; gap: .25rem 1.25rem; margin: .75rem 0; padding: 0; list-style: none; font-size: .875rem }
ul.key svg { width: 1.6rem; height: .5rem; margin-right: .4rem; vertical-align: .1rem }
ul.key .c0 { fill: var(--c0) } ul.key .c1 { fill: var(--c1) } ul.key .c2 { fill: var(--c2) }
ul.key .c3 { fill: var(--c3) } ul.key .c4 { fill: var(--c4) } ul.key .wrong { fill: var(--quiet); opacity: .45 }
svg.ring { display: block; width: min(100%, 22rem); margin: 0 auto }
svg.ring .c0 { fill: var(--c0) } svg.ring .c1 { fill: var(--c1) } svg.ring .c2 { fill: var(--c2) }
svg.ring .c3 { fill: var(--c3) } svg.ring .c4 { fill: var(--c4) } svg.ring .none { fill: var(--line) }
svg.ring text { fill: var(--panel); font: 600 12px system-ui, sans-serif; text-anchor: middle }
svg.ring .none + text { fill: var(--ink) }
table { width: 100%; border-collapse: collapse; font-variant-numeric: tabular-nums }
caption { padding: 0 0 .5rem; text-align: left; color: var(--quiet); font-size: .875rem }
th, td { padding: .3rem .5rem .3rem 0; border-top: 1px solid var(--line); text-align: left; font-weight: 400; vertical-align: baseline }
thead th { font-weight: 600 }
td i { color: var(--quiet); font-style: normal; font-size: .875rem; white-space: nowrap }
b { font-weight: 600 }
.octants td { text-align: right }
details { margin-top: 1rem }
summary { cursor: pointer; color: var(--accent) }
pre { overflow-x: auto; margin: .5rem 0 0; font: .8125rem/1.5 ui-monospace, monospace }
ul.files { margin: .5rem 0 0; padding-left: 1.2rem; overflow-wrap: anywhere }
@media print { body { max-width: none } .two { break-inside: avoid } }
)";

}  // namespace biseam::tool
