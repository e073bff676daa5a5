// Every word of the query has to begin a word of an entry; letters count without their marks. A message that somebody copied
// with numbers and names in it has words that stand nowhere: then the entries with most of its words come first. Polish words
// change their ends: where nothing is found, words are asked for without them.
(function () {
  var plain = {'ą': 'a', 'ć': 'c', 'ę': 'e', 'ł': 'l', 'ń': 'n', 'ó': 'o', 'ś': 's', 'ź': 'z', 'ż': 'z'};
  function fold(text) {
    return text.toLowerCase().replace(/[ąćęłńóśźż]/g, function (letter) { return plain[letter]; });
  }
  function words(text) {
    return fold(text).split(/[^a-z0-9]+/).filter(function (word) { return word; });
  }
  var entries = PAGES.map(function (it) {
    return {address: it[0], page: it[1], title: it[2], text: it[3], titleWords: words(it[2]),
            head: ' ' + words(it[1] + ' ' + it[2]).join(' '), whole: ' ' + words(it[1] + ' ' + it[2] + ' ' + it[3]).join(' ')};
  });
  function points(entry, wanted, phrase, least) {
    var sum = 0, met = 0;
    for (var i = 0; i < wanted.length; i++) {
      if (entry.whole.indexOf(' ' + wanted[i]) < 0) continue;
      met++;
      sum += entry.head.indexOf(' ' + wanted[i]) < 0 ? 1 : 5;
    }
    // The whole of a message in the query: that is the one.
    var own = entry.titleWords.filter(function (word) { return word.length > 1; });
    var isQuoted = own.length > 1 && own.every(function (word) { return wanted.indexOf(word) >= 0; });
    return met < least && !isQuoted ? 0 : sum + (isQuoted ? 10 * own.length : 0) + (entry.whole.indexOf(' ' + phrase) < 0 ? 0 : 20);
  }
  function excerpt(entry, word) {
    var place = Math.max(0, fold(entry.text).indexOf(word) - 40);
    return (place ? '…' : '') + entry.text.substr(place, 150);
  }
  function stem(word) {
    return word.length < 5 || /\d/.test(word) ? word : word.slice(0, Math.max(4, Math.ceil(word.length * 0.65)));
  }
  function search(query) {
    var results = searchFor(words(query));
    return results.length ? results : searchFor(words(query).map(stem));
  }
  function searchFor(wanted) {
    var phrase = wanted.join(' ');
    function found(least) {
      return entries.map(function (entry) { return {entry: entry, points: points(entry, wanted, phrase, least), text: excerpt(entry, wanted[0])}; })
        .filter(function (it) { return it.points; })
        .sort(function (a, b) { return b.points - a.points; }).slice(0, 12);
    }
    if (!wanted.length) return [];
    var all = found(wanted.length);
    return all.length || wanted.length < 3 ? all : found(Math.max(2, Math.floor(wanted.length / 3)));
  }
  var field = document.getElementById('query'), list = document.getElementById('found');
  function element(name, text, parent) {
    var made = document.createElement(name);
    made.textContent = text;
    parent.appendChild(made);
    return made;
  }
  function show() {
    var results = search(field.value);
    list.textContent = '';
    list.hidden = !words(field.value).length;
    results.forEach(function (it) {
      var link = element('a', '', element('li', '', list));
      link.href = it.entry.address;
      link.onclick = function () { list.hidden = true; };
      element('b', it.entry.title, link);
      element('small', it.entry.page, link);
      element('span', it.text, link);
    });
    if (!results.length) element('li', 'Nic takiego tu nie ma.', list);
  }
  field.addEventListener('input', show);
  field.addEventListener('focus', show);
  field.addEventListener('keydown', function (event) {
    var first = list.querySelector('a');
    if (event.key === 'Enter' && first) location.href = first.href;
    if (event.key === 'Escape') list.hidden = true;
  });
  document.addEventListener('click', function (event) {
    if (!event.target.closest('.search')) list.hidden = true;
  });
  var here = document.querySelector('nav [aria-current]'), menu = document.querySelector('nav');
  if (here) menu.scrollTop = here.offsetTop - menu.offsetTop - menu.clientHeight / 2;
})();
