// The look and the behaviour of the report's page. Both go into the page as they stand.
#pragma once

#include <string_view>

namespace scrubwell::hosts {

inline constexpr std::string_view kPageStyle = R"css(
:root{color-scheme:light dark;--page:#f5f6f8;--card:#fff;--text:#1b2430;--soft:#566273;
--line:#d8dde5;--link:#1c5d8c;--tint:#e9f0f6;--code:#f1f3f6}
@media (prefers-color-scheme:dark){:root{--page:#11161c;--card:#19202a;--text:#e3e8ef;
--soft:#a3aebd;--line:#2d3744;--link:#86bdec;--tint:#1e2c3a;--code:#131a22}}
*{box-sizing:border-box}
html{scroll-padding-top:4.5rem}
body{margin:0;background:var(--page);color:var(--text);
font:15px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans",Arial,sans-serif}
a{color:var(--link)}
:focus-visible{outline:2px solid var(--link);outline-offset:2px;border-radius:4px}
.sprite{position:absolute;width:0;height:0;overflow:hidden}
.i{width:1.3em;height:1.3em;flex:none;fill:none;stroke:currentColor;stroke-width:1.7;
stroke-linecap:round;stroke-linejoin:round;color:var(--link)}
.skip{position:absolute;left:-999em}
.skip:focus{left:1rem;top:1rem;background:var(--card);padding:.5rem 1rem;z-index:3}
header,.page,footer{max-width:78rem;margin:0 auto;padding:0 1.5rem}
header{padding-top:2.2rem}
.brand{margin:0;color:var(--soft);font-size:.8rem;letter-spacing:.09em;text-transform:uppercase}
h1{margin:.1rem 0 .2rem;font-size:1.85rem;line-height:1.2;font-weight:650}
.lead{margin:0;font-size:1.1rem;color:var(--soft)}
.intro{max-width:46rem;margin:1rem 0}
.sums{display:flex;flex-wrap:wrap;gap:.5rem 2.4rem;margin:1.2rem 0;padding:0;list-style:none}
.sums b{display:block;font-size:1.7rem;line-height:1.2;font-weight:600;
font-variant-numeric:tabular-nums}
.sums span{color:var(--soft)}
.card{background:var(--card);border:1px solid var(--line);border-radius:10px}
.facts{padding:1rem 1.25rem}
.facts h2{margin:0 0 .5rem}
.facts dl{display:grid;grid-template-columns:repeat(auto-fit,minmax(14rem,1fr));gap:.6rem 1.5rem;
margin:0}
.facts dt{color:var(--soft);font-size:.85rem}
.facts dd{margin:0;overflow-wrap:anywhere;unicode-bidi:isolate}
.mark{border-left:4px solid var(--link);padding:.6rem 1rem;margin:1rem 0}
h2{font-size:1.15rem;font-weight:620;margin:0}
h3{font-size:1rem;font-weight:600;margin:0}
.page{display:grid;grid-template-columns:17rem minmax(0,1fr);gap:1.75rem;margin-top:1.5rem}
nav{position:sticky;top:1rem;align-self:start;max-height:calc(100vh - 2rem);overflow:auto;
padding:.9rem .6rem}
nav h2,nav summary{font-size:.85rem;font-weight:600;color:var(--soft);padding:.2rem .6rem;margin:0}
nav summary{cursor:pointer}
nav ul{list-style:none;margin:0;padding:0}
nav a,nav li>span{display:flex;align-items:center;gap:.55rem;padding:.3rem .6rem;border-radius:6px;
color:inherit;text-decoration:none}
nav a:hover{background:var(--tint)}
nav .n{margin-left:auto;color:var(--soft);font-variant-numeric:tabular-nums}
nav .off{opacity:.6}
nav li>span{color:var(--soft);font-size:.93rem}
nav li>span .i{color:inherit}
.bar{position:sticky;top:0;z-index:2;display:flex;flex-wrap:wrap;align-items:center;gap:.5rem .8rem;
background:var(--page);padding:.75rem 0}
.bar label{flex:1 1 15rem}
.bar label span{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%)}
.bar input{width:100%;font:inherit;color:inherit;padding:.5rem .8rem;background:var(--card);
border:1px solid var(--line);border-radius:8px}
.bar input::placeholder{color:var(--soft);opacity:1}
.bar button{font:inherit;font-size:.9rem;color:var(--link);background:none;border:1px solid
var(--line);border-radius:8px;padding:.45rem .8rem;cursor:pointer}
.bar button:hover{background:var(--tint)}
.bar output{color:var(--soft);font-size:.9rem;font-variant-numeric:tabular-nums;min-width:9rem}
.cat{margin:0 0 1.5rem;overflow:clip}
.cat>.top{display:flex;align-items:center;gap:.7rem;padding:1rem 1.25rem 0}
.cat>.top .i{width:1.6rem;height:1.6rem}
.count{margin-left:auto;color:var(--soft);font-variant-numeric:tabular-nums}
.about{margin:.3rem 1.25rem .9rem;color:var(--soft)}
.about p{margin:.3rem 0}
.k{border-top:1px solid var(--line);content-visibility:auto;contain-intrinsic-size:auto 4rem}
.k>summary{display:flex;align-items:center;gap:.6rem;padding:.6rem 1.25rem;cursor:pointer;
background:var(--tint);list-style:none}
summary::-webkit-details-marker{display:none}
.k>summary::before,.p>summary::before{content:"";flex:none;width:.42em;height:.42em;
border:solid var(--soft);border-width:0 2px 2px 0;transform:rotate(-45deg);margin-right:.15rem}
.k[open]>summary::before,.p[open]>summary::before{transform:rotate(45deg)}
.p{border-top:1px solid var(--line);content-visibility:auto;contain-intrinsic-size:auto 3.6rem}
.p>summary{display:flex;gap:.75rem;padding:.5rem 1.25rem .55rem 1.4rem;cursor:pointer;
list-style:none}
.p>summary::before{margin-top:.55em}
.p>summary:hover{background:var(--tint)}
.p>summary>span{min-width:0;overflow-wrap:anywhere;unicode-bidi:isolate}
.p b{font-weight:600}
.p small{display:block;font-size:.93rem;color:var(--soft)}
.p>p,.p>dl{margin:.2rem 1.25rem .7rem 2.8rem;overflow-wrap:anywhere}
.p>dl{display:grid;grid-template-columns:max-content minmax(0,1fr);gap:.15rem 1rem;
font-size:.93rem;padding-bottom:.4rem}
.p dt{color:var(--soft)}
.p dd{margin:0;unicode-bidi:isolate;overflow-wrap:anywhere}
code,.p dd{font-family:ui-monospace,"Cascadia Mono",Consolas,"DejaVu Sans Mono",monospace;
font-size:.88em}
code{background:var(--code);border-radius:4px;padding:.1em .3em;unicode-bidi:isolate}
.tag{display:inline-block;font:normal .8rem/1.4 system-ui,sans-serif;color:var(--soft);
border:1px solid var(--line);border-radius:99px;padding:0 .5rem;margin-left:.35rem}
.notes{padding:1rem 1.25rem}
.notes p{color:var(--soft);margin:.2rem 0}
.notes ul{margin:.4rem 0 0;padding-left:1.2rem}
.notes li{overflow-wrap:anywhere;unicode-bidi:isolate}
footer{color:var(--soft);font-size:.85rem;padding-top:1.5rem;padding-bottom:2.5rem}
[hidden]{display:none!important}
@media screen and (max-width:54rem){
header,.page,footer{padding-left:1rem;padding-right:1rem}
header{padding-top:1.4rem}
h1{font-size:1.5rem}
.facts dl{grid-template-columns:repeat(2,minmax(0,1fr))}
.page{display:block;margin-top:1rem}
nav{position:static;max-height:none;margin-bottom:.5rem}
nav>ul{display:flex;flex-wrap:wrap;gap:.1rem}
nav a{border:1px solid var(--line);border-radius:99px;padding:.15rem .7rem;margin:.15rem}
nav .n{margin-left:.1rem}
.bar output{min-width:0;width:100%}
.bar label{flex-basis:100%}
.cat>.top,.about,.k>summary{padding-left:1rem;padding-right:1rem}
.about{margin-left:0;margin-right:0}
.p>summary{padding-left:1rem;padding-right:1rem}
.p>p,.p>dl{margin-left:1rem;margin-right:1rem}
.p>dl{grid-template-columns:minmax(0,1fr);gap:0}
.p dd{margin-bottom:.35rem}
}
@media print{
:root{color-scheme:light;--page:#fff;--card:#fff;--text:#000;--soft:#444;--line:#bbb;--link:#123e5e;
--tint:#f1f4f7;--code:#fff}
@page{margin:16mm 14mm}
html{font-size:9pt}
body{font-size:1rem;line-height:1.35}
header,.page,footer{max-width:none;padding-left:0;padding-right:0}
header{padding-top:0}
.page{display:block}
nav,.bar,.skip{display:none!important}
.cat,.facts{border-radius:0}
.cat{overflow:visible;border:0;margin-bottom:1rem}
.cat>.top,.about,.k>summary{padding-left:0;padding-right:0;margin-left:0;margin-right:0}
.k>summary{padding:.3rem .4rem}
.k,.p{content-visibility:visible}
.k::details-content,.p::details-content{content-visibility:visible;display:block;block-size:auto}
.k>summary::before,.p>summary::before{display:none}
.k>summary,.cat>.top,.about{break-after:avoid;print-color-adjust:exact}
.p{break-inside:avoid}
.p>summary{padding:.4rem .4rem .1rem}
.p>p,.p>dl{margin:.1rem .4rem .3rem;padding:0}
.facts dl{grid-template-columns:repeat(4,minmax(0,1fr))}
.sums b{font-size:1.5rem}
}
)css";

inline constexpr std::string_view kPageScript = R"js(
(function () {
  'use strict';
  var page = document, box = page.getElementById('filter'), hits = page.getElementById('hits');
  var all = function (query, root) {
    return Array.prototype.slice.call((root || page).querySelectorAll(query));
  };
  var groups = null, timer = 0, filtering = false;
  page.getElementById('bar').hidden = false;

  function read() {
    groups = all('.k').map(function (group) {
      var category = group.closest('.cat');
      return {
        element: group, category: category, wasOpen: group.open,
        text: (category.dataset.name + ' ' + group.firstElementChild.textContent).toLowerCase(),
        items: all('.p', group).map(function (item) {
          return { element: item, text: item.textContent.toLowerCase() };
        })
      };
    });
  }

  function apply() {
    if (!groups) read();
    var words = box.value.toLowerCase().split(/\s+/).filter(Boolean), total = 0, shown = 0;
    var perCategory = new Map();
    groups.forEach(function (group) {
      if (words.length && !filtering) group.wasOpen = group.element.open;
      var rest = words.filter(function (word) { return group.text.indexOf(word) < 0; });
      var left = 0;
      group.items.forEach(function (item) {
        var hide = !rest.every(function (word) { return item.text.indexOf(word) >= 0; });
        if (item.element.hidden !== hide) item.element.hidden = hide;
        if (!hide) ++left;
      });
      group.element.hidden = left === 0;
      group.element.querySelector('.count').textContent = left;
      group.element.open = words.length ? left <= 500 || group.wasOpen : group.wasOpen;
      total += group.items.length;
      shown += left;
      perCategory.set(group.category, (perCategory.get(group.category) || 0) + left);
    });
    filtering = words.length > 0;
    perCategory.forEach(function (left, category) {
      category.hidden = left === 0;
      var link = page.querySelector('nav a[href="#' + category.id + '"]');
      link.classList.toggle('off', left === 0);
      link.querySelector('.n').textContent = left;
      category.querySelector('.count').textContent = left;
    });
    hits.textContent = words.length
      ? hits.dataset.text.replace('%s', shown).replace('%s', total) : '';
  }

  function setAll(open) {
    all('.k,.p').forEach(function (element) { element.open = open; });
  }
  function reveal() {
    var target = location.hash && page.getElementById(decodeURIComponent(location.hash.slice(1)));
    for (var at = target; at; at = at.parentElement) if (at.tagName === 'DETAILS') at.open = true;
    if (target) target.scrollIntoView();
  }

  box.addEventListener('input', function () { clearTimeout(timer); timer = setTimeout(apply, 150); });
  page.getElementById('expand').addEventListener('click', function () { setAll(true); });
  page.getElementById('collapse').addEventListener('click', function () { setAll(false); });
  page.addEventListener('keydown', function (event) {
    if (event.key === '/' && page.activeElement !== box) { event.preventDefault(); box.focus(); }
    if (event.key === 'Escape' && page.activeElement === box) { box.value = ''; apply(); }
  });
  window.addEventListener('hashchange', reveal);
  reveal();

  // On paper nothing can be opened.
  var opened = [];
  window.addEventListener('beforeprint', function () {
    opened = all('details:not([open])').filter(function (e) { return !e.closest('nav'); });
    opened.forEach(function (element) { element.open = true; });
  });
  window.addEventListener('afterprint', function () {
    opened.forEach(function (element) { element.open = false; });
    opened = [];
  });
})();
)js";

}  // namespace scrubwell::hosts
