#include "page_style.h"

#include "palette.h"
#include "plant_report.h"

namespace plant_report
{

namespace
{

constexpr const char* Everywhere = R"css(*{box-sizing:border-box}
body{margin:0 auto;padding:2rem 1rem 4rem;max-width:60rem;background:var(--ground);color:var(--ink);
font:1rem/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans",sans-serif;overflow-wrap:anywhere}
h1{font-size:2rem;line-height:1.2;margin:0 0 .5rem}
h2{font-size:1.35rem;line-height:1.3;margin:0 0 .25rem}
h3{font-size:1.05rem;margin:1.5rem 0 .5rem}
p{margin:0 0 1rem;max-width:44rem;text-wrap:pretty}
h1,h2,p,li,td,dd,figcaption{unicode-bidi:plaintext}
header p,footer,figcaption span,summary,time{color:var(--faint)}
header p{margin:0 0 .25rem}
a{color:inherit}
:focus-visible{outline:2px solid var(--ink);outline-offset:2px}
nav ul{display:flex;flex-wrap:wrap;gap:.25rem 1.25rem;margin:1.25rem 0 0;padding:0;list-style:none}
section{margin-top:3rem;padding-top:1.5rem;border-top:1px solid var(--line)}
figure{margin:0}
.plant-chart{display:block;width:100%;height:auto;font-family:inherit}
.narrow{display:none}
details{margin-top:.75rem}
summary{cursor:pointer;width:fit-content}
.table{overflow:auto;max-height:24rem;margin:.5rem 0}
table{border-collapse:collapse;font-size:.875rem}
th,td{padding:.25rem 1.25rem .25rem 0;text-align:start;vertical-align:top;border-bottom:1px solid var(--line);
max-width:24rem}
th{position:sticky;top:0;background:var(--ground);white-space:nowrap}
.number,.date{font-variant-numeric:tabular-nums;white-space:nowrap}
.number{text-align:right}
.photos{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,10.5rem),1fr));gap:1.25rem 1rem;
margin:1rem 0;padding:0;list-style:none}
.photos img{display:block;width:100%;aspect-ratio:4/3;object-fit:cover;background:var(--line);border-radius:4px}
figcaption{font-size:.875rem;margin-top:.35rem}
dl{display:grid;grid-template-columns:max-content 1fr;gap:.25rem 1.5rem;margin:1.25rem 0 0}
dt{color:var(--faint)}
dd{margin:0;white-space:pre-line}
.history{margin:0;padding:0;list-style:none}
.history li{display:grid;grid-template-columns:7rem 1fr;gap:0 1rem;padding:.3rem 0}
.history time{white-space:nowrap}
.history p{margin:0;white-space:pre-line}
footer{margin-top:3rem;padding-top:1rem;border-top:1px solid var(--line);font-size:.875rem}
@media screen and (max-width:46rem){
.wide{display:none}
.narrow{display:block;max-width:30rem}
h1{font-size:1.6rem}
section{margin-top:2rem}
.history li{grid-template-columns:1fr}
}
@media print{
@page{margin:15mm}
body{padding:0;max-width:none;font-size:10pt}
nav{display:none}
section{border:0}
h2,h3,summary{break-after:avoid}
summary{list-style:none}
.picture,tr,.history li,.photos li{break-inside:avoid}
.photos{grid-template-columns:repeat(3,1fr)}
.plant-chart{width:auto;max-width:100%;max-height:195mm}
details::details-content{display:block;content-visibility:visible;height:auto}
.table{overflow:visible;max-height:none;column-gap:8mm}
.two-columns{columns:2}
.three-columns{columns:3}
table{font-size:7pt;line-height:1.35}
:is(.two-columns,.three-columns) table{width:100%}
th,td{padding:.1rem .4rem .1rem 0}
thead{display:table-header-group}
th,th.number,th.date{position:static;white-space:normal;overflow-wrap:normal}
}
)css";

// The colours of what is around the charts.
std::string ThemeColours(const char* RoleColour::*theme)
{
    return std::string(":root{--ink:") + ColourOf(Role::Ink).*theme + ";--faint:" + ColourOf(Role::Faint).*theme +
           ";--line:" + ColourOf(Role::Line).*theme + ";--ground:" + ColourOf(Role::Ground).*theme + "}\n";
}

} // namespace

std::string PageStyle()
{
    return ":root{color-scheme:light dark}\n" + ThemeColours(&RoleColour::Light) +
           "@media screen and (prefers-color-scheme:dark){\n" + ThemeColours(&RoleColour::Dark) + "}\n" + Everywhere;
}

} // namespace plant_report

std::string PlantReportStyle()
{
    return plant_report::PaletteStyle();
}
