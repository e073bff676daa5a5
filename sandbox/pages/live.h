// Keeps an open page up to date, where the browser runs scripts: it asks the sandbox every two
// seconds whether something has arrived, and takes over the parts of the page that have changed.
#pragma once

namespace tavrix::sandbox {

// Forms stand outside those parts, so nobody's typing is lost. A part waits while text in it is
// selected; the row that the reader sees stays where it is.
inline constexpr const char* live_script = R"js(
(() => {
  const sign = document.getElementById('na-zywo'), parts = [...document.querySelectorAll('[data-live]')];
  if (parts.length === 0) { sign.hidden = true; return; }
  const key = 'piaskownica-na-zywo', every = 2000;
  const shown = new Map(parts.map(it => [it.id, it.innerHTML]));
  let on = true, answers = true, seen = '';
  try { on = localStorage.getItem(key) !== 'nie'; } catch {}
  const words = document.createElement('span'), button = document.createElement('button');
  button.type = 'button';
  words.setAttribute('role', 'status');
  sign.replaceChildren(words, ' ', button);
  const set = (element, text) => { if (element.textContent !== text) element.textContent = text; };
  const say = () => {
    set(words, !on ? 'Odświeżanie na żywo jest wyłączone.'
      : answers ? 'Strona odświeża się na żywo.' : 'Piaskownica nie odpowiada; próby trwają.');
    set(button, on ? 'Wyłącz' : 'Włącz');
  };
  const selecting = part => {
    const selection = getSelection();
    return !selection.isCollapsed && selection.rangeCount > 0 && selection.getRangeAt(0).intersectsNode(part);
  };
  const same = (part, link) =>
    link && [...part.querySelectorAll('a')].find(it => it.getAttribute('href') === link.getAttribute('href'));
  const take = (part, fresh) => {
    const held = scrollY === 0 ? null
      : [...part.querySelectorAll('a')].find(it => {
          const {top} = it.getBoundingClientRect();
          return top >= 0 && top < innerHeight;
        });
    const top = held ? held.getBoundingClientRect().top : 0;
    const focused = part.contains(document.activeElement) ? document.activeElement : null;
    const below = part.getBoundingClientRect().bottom < 0, height = part.offsetHeight;
    part.replaceChildren(...fresh.childNodes);
    const again = same(part, held);
    if (focused) same(part, focused)?.focus({preventScroll: true});
    if (below) scrollBy(0, part.offsetHeight - height);
    else if (again) scrollBy(0, again.getBoundingClientRect().top - top);
  };
  const ask = async address => {
    const answer = await fetch(address, {cache: 'no-store', signal: AbortSignal.timeout(10000)});
    if (!answer.ok) throw new Error();
    return answer.text();
  };
  const refresh = async () => {
    const state = JSON.parse(await ask('/sandbox/state?page=999999999&pageSize=1'));
    delete state.now;
    const mark = JSON.stringify(state);
    if (mark === seen) return;
    const fresh = new DOMParser().parseFromString(await ask(location.href), 'text/html');
    let all = true;
    for (const part of parts) {
      const now = fresh.getElementById(part.id);
      if (!now || now.innerHTML === shown.get(part.id)) continue;
      if (!on || selecting(part)) { all = false; continue; }
      shown.set(part.id, now.innerHTML);
      take(part, now);
    }
    if (all) seen = mark;
  };
  const tick = async () => {
    if (on && !document.hidden) {
      try { await refresh(); answers = true; } catch { answers = false; }
      say();
    }
    setTimeout(tick, every);
  };
  button.addEventListener('click', () => {
    on = !on;
    try { localStorage.setItem(key, on ? 'tak' : 'nie'); } catch {}
    say();
  });
  say();
  setTimeout(tick, every);
})();
)js";

}  // namespace tavrix::sandbox
