"""How the page looks."""

STYLE = """
:root { --ink: #1f2933; --soft: #616e7c; --line: #d9e0e7; --paper: #fff; --ground: #f4f6f8;
  --green: #2e8b57; --amber: #c77d0a; --red: #c0392b; --grey: #8a97a5; }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--ink);
  font: 15px/1.5 system-ui, "DejaVu Sans", sans-serif; }
main { max-width: 1120px; margin: 0 auto; padding: 24px; }
h1 { margin: 0 0 4px; font-size: 28px; }
h2 { margin: 36px 0 12px; font-size: 20px; }
h3 { margin: 0 0 8px; font-size: 16px; overflow-wrap: anywhere; }
a { color: inherit; }
.card { background: var(--paper); border: 1px solid var(--line); border-radius: 8px;
  padding: 20px; margin-bottom: 16px; }
.summary { border-left: 8px solid var(--grey); }
.summary.green { border-left-color: var(--green); }
.summary.amber { border-left-color: var(--amber); }
.summary.red { border-left-color: var(--red); }
.soft { color: var(--soft); }
.verdict { font-size: 20px; font-weight: 600; margin: 8px 0; }
.verdict.green { color: var(--green); } .verdict.amber { color: var(--amber); }
.verdict.red { color: var(--red); }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; padding: 6px 10px; border-bottom: 1px solid var(--line);
  vertical-align: top; overflow-wrap: break-word; }
thead th { font-weight: 600; color: var(--soft); }
.matrix td, .matrix thead th + th { text-align: center; width: 130px; overflow-wrap: normal; }
.functions { font-size: 13px; } .functions td:first-child { overflow-wrap: anywhere; }
.chip { display: inline-block; min-width: 22px; margin: 1px; border-radius: 11px; color: #fff;
  padding: 0 6px; text-align: center; text-decoration: none; font-weight: 600; line-height: 22px; }
.chip.green { background: var(--green); } .chip.amber { background: var(--amber); }
.chip.red { background: var(--red); } .chip.grey { background: var(--grey); }
.chip:hover, .chip:focus { outline: 3px solid #9ec5ff; }
article { scroll-margin-top: 12px; }
article:target { border-color: #3b7dd8; box-shadow: 0 0 0 2px #9ec5ff; }
.reasons { margin: 8px 0; padding-left: 22px; overflow-wrap: anywhere; }
details { margin-top: 8px; }
summary { cursor: pointer; color: var(--soft); }
pre { background: var(--ground); border-radius: 6px; padding: 10px; overflow: auto;
  max-height: 420px; font: 12px/1.45 "DejaVu Sans Mono", monospace; margin: 8px 0; }
.timeline { width: 100%; height: auto; display: block; margin: 8px 0; }
.timeline .grid { stroke: var(--line); } .timeline text { font-size: 11px; fill: var(--ink); }
.timeline .tick { text-anchor: middle; fill: var(--soft); }
.timeline .label { text-anchor: end; } .timeline .phase { text-anchor: middle; fill: #fff;
  paint-order: stroke; stroke: #00000055; stroke-width: 2px; font-weight: 600; }
.timeline .switch { font-weight: 600; } .timeline .mark { fill: #e0a100; stroke: #fff; }
.window { display: block; max-width: 100%; border: 1px solid var(--line); }
@media print { details { display: none; } body { background: #fff; } }
"""
