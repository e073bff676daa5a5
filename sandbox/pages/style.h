// How the pages look: one style sheet inside each page, light or dark as the reader's system is.
#pragma once

namespace tavrix::sandbox {

// The colours of texts stand out from their grounds by at least 4.5 : 1 (WCAG 2.1, 1.4.3).
inline constexpr const char* style = R"css(
:root{color-scheme:light dark;--ink:#1c2733;--dim:#52636f;--paper:#fff;--ground:#f4f6f8;--line:#dde3e9;
--link:#0b5cad;--head:#12324f;--headdim:#b9cde0;--okbg:#dff3e4;--ok:#14602c;--waitbg:#fdf1d3;--wait:#6b4c00;
--badbg:#fbe0df;--bad:#9b1c1c;--field:#7b8a97}
@media(prefers-color-scheme:dark){:root{--ink:#e4eaf0;--dim:#a3b2c0;--paper:#17212b;--ground:#0e151c;
--line:#2c3a47;--link:#7db8f5;--head:#0b2036;--headdim:#a9c0d6;--okbg:#12381f;--ok:#8fe0a8;--waitbg:#3d2f08;
--wait:#f2cf7a;--badbg:#451a1a;--bad:#f5a9a5}}
*{box-sizing:border-box}html{overflow-anchor:none}
body{font:16px/1.5 system-ui,"DejaVu Sans",sans-serif;color:var(--ink);background:var(--ground);margin:0}
a{color:var(--link)}a:focus-visible,button:focus-visible,input:focus-visible,select:focus-visible,pre:focus-visible{outline:3px solid var(--link);outline-offset:2px}
.skip{position:absolute;left:-9999px}.skip:focus{left:8px;top:8px;background:var(--paper);padding:8px}
header{background:var(--head);color:#fff;padding:14px 24px}header a{color:#fff}
header h1{font-size:20px;margin:0}header h1 a{text-decoration:none}header p{margin:0;color:var(--headdim);font-size:14px}
nav ul{list-style:none;display:flex;flex-wrap:wrap;gap:4px 18px;margin:8px 0 0;padding:0}
#na-zywo{margin-top:6px}#na-zywo button{background:none;color:#fff;border:1px solid var(--headdim);padding:1px 10px;margin:0 0 0 6px}
::placeholder{color:var(--dim);opacity:1}.search{display:flex;flex-wrap:wrap;gap:4px 14px;align-items:end;margin-top:14px}.search label{margin:0}.search input,.search select{display:block;min-height:38px}
.search label:first-child{flex:1 1 22em}.search input{width:100%}.search button{margin:0}.search p{margin:0 0 6px}
.steps{padding-left:1.3em}.steps>li{margin-bottom:14px}.steps p{margin:4px 0}.steps h3{margin:0}.steps pre{margin:4px 0;padding:6px 12px}
.trail{margin:14px 0 0;font-size:14px}.trail ol{list-style:none;display:flex;flex-wrap:wrap;gap:0 6px;margin:0;padding:0}
.trail li+li::before{content:"› ";color:var(--dim)}
main{max-width:1320px;margin:0 auto;padding:0 24px 48px}
section{background:var(--paper);border:1px solid var(--line);border-radius:8px;padding:4px 20px 18px;margin-top:18px}
h2{font-size:18px;margin:14px 0 8px}h3{font-size:15px;margin:18px 0 6px;color:var(--dim)}
h2,h3,p,td,th,dd,li{overflow-wrap:anywhere;unicode-bidi:isolate}
table{border-collapse:collapse;width:100%}th{text-align:left;font-weight:600}
td,th{padding:6px 10px;border-bottom:1px solid var(--line);vertical-align:top;font-size:14px}
thead th{color:var(--dim);border-bottom-width:2px;overflow-wrap:normal}
.n{text-align:right;white-space:nowrap}.total{font-weight:700;font-size:16px}
@media(min-width:1100px){.when,.keep{white-space:nowrap}}code,pre,.mono{font-family:ui-monospace,"DejaVu Sans Mono",monospace;font-size:13px}
dl{display:grid;grid-template-columns:max-content 1fr;gap:2px 24px;margin:8px 0}dt{color:var(--dim)}dd{margin:0}
.ok,.wait,.bad{display:inline-block;border-radius:10px;padding:1px 9px;font-size:13px;line-height:1.35}
.ok{background:var(--okbg);color:var(--ok)}.wait{background:var(--waitbg);color:var(--wait)}
.bad{background:var(--badbg);color:var(--bad)}
.reason,.note,.empty{color:var(--dim)}.reason{font-size:13px;margin-top:3px}
.alert{border-left:5px solid var(--wait);padding:10px 20px}.alert p{margin:0}
.parties{display:flex;flex-wrap:wrap;gap:8px 48px}.parties p{margin:0}.parts{display:flex;gap:18px;margin:12px 0 0}
pre{tab-size:4;background:var(--ground);border:1px solid var(--line);border-radius:6px;padding:12px;overflow:auto;
max-height:480px;line-height:1.45;white-space:pre-wrap;overflow-wrap:anywhere}
.paces{display:grid;grid-template-columns:repeat(auto-fit,minmax(min(17em,100%),1fr));gap:0 14px}
fieldset{border:1px solid var(--line);border-radius:6px;margin:0 0 10px;padding:6px 14px 12px;min-width:0}
label{display:inline-block;margin:6px 18px 0 0}
input,select{font:inherit;color:inherit;background:var(--paper);border:1px solid var(--field);border-radius:4px;padding:5px 8px;max-width:100%}
input[type=number]{width:9em;display:block}.wide{width:100%}.wide input{width:100%;display:block}
button{font:inherit;background:var(--link);color:var(--paper);border:0;border-radius:6px;padding:8px 16px;margin-top:8px}
@media(max-width:760px){header{padding:12px 16px}main{padding:0 8px 32px}section{padding:4px 14px 14px}
table,tbody,tfoot,tr,td,tfoot th{display:block}thead{display:none}
tbody tr,tfoot tr{border:1px solid var(--line);border-radius:8px;margin:10px 0;padding:6px 10px}
td,tfoot th{border:0;padding:3px 0;text-align:left;white-space:normal}
td[data-label]{display:grid;grid-template-columns:7.5em minmax(0,1fr);gap:0 10px}
td[data-label]::before{content:attr(data-label);color:var(--dim)}td:empty{display:none}
td.n{text-align:left;white-space:normal}dl{grid-template-columns:minmax(0,1fr)}dd{margin-bottom:6px}}
)css";

}  // namespace tavrix::sandbox
