"use strict";
(() => {
  // The page is complete without this: it filters links and results, sorts the table of results, and opens blocks and
  // goes there where the browser does not do that by itself.
  const table = document.getElementById("table"), form = document.getElementById("filter");
  const openTarget = () => {
    const target = document.getElementById(location.hash.slice(1));
    if (!target) return;
    const isHidden = target.closest("[hidden]");
    if (isHidden) form.reset();
    const block = target.closest("details");
    if (block) block.open = true;
    if (block || isHidden) target.scrollIntoView();
  };
  if (!table || !form) return;

  const groups = Array.from(table.tBodies), sizes = groups.map((group) => group.rows.length);
  const rows = groups.flatMap((group) => Array.from(group.rows));
  let texts = null;  // what is written in each row, and what its verdict is called elsewhere
  const findTexts = () => {
    const words = new Map(Array.from(form.elements.verdict.options, (option) => [option.value, option.textContent]));
    texts = rows.map((row, i) => {
      const cell = links[i].verdict === row.dataset.verdict ? links[i].parts[0].textContent : "";
      const parts = [...Array.from(row.cells, (each) => each.textContent), words.get(row.dataset.verdict), cell];
      return parts.join("\n").toLowerCase();
    });
  };
  let links = null;  // what there is of each link, in the order of the rows
  const findLinks = () => {
    const known = new Map();
    links = rows.map((row) => {
      const anchor = row.querySelector("a").hash.slice(1);
      if (!known.has(anchor)) {
        const cell = document.getElementById("at-" + anchor);
        const block = document.getElementById(anchor).closest("details");
        known.set(anchor, { parts: [cell, block], verdict: cell.firstElementChild.className });
      }
      return known.get(anchor);
    });
    return new Set(known.values());
  };
  // Lists take as much room as they show while nobody sees them.
  const fit = (group) => {
    const shown = Array.from(group.children).filter((child) => !child.hidden).length;
    group.hidden = shown === 0;
    group.style.setProperty("--rows", shown);
  };
  let all = null;
  const filter = () => {
    all = all || findLinks();
    if (!texts) findTexts();
    const verdict = form.elements.verdict.value, medium = form.elements.medium.value;
    const words = form.elements.text.value.toLowerCase().split(/\s+/);
    const isAny = !verdict && !medium && words.every((word) => !word);
    for (const link of all) link.isShown = false;
    let shown = 0;
    rows.forEach((row, i) => {
      const fits = (!medium || row.dataset.medium === medium) && words.every((word) => texts[i].includes(word));
      row.hidden = !fits || (verdict && row.dataset.verdict !== verdict);
      shown += row.hidden ? 0 : 1;
      if (fits && (!verdict || links[i].verdict === verdict)) links[i].isShown = true;
    });
    // Cells that leave a long grid one after the other would keep a browser busy for a minute.
    const grids = Array.from(document.querySelectorAll(".links"));
    for (const grid of grids) grid.style.display = "none";
    document.body.getBoundingClientRect();
    let shownLinks = 0;
    for (const link of all) {
      for (const part of link.parts) part.hidden = !link.isShown;
      shownLinks += link.isShown ? 1 : 0;
    }
    document.getElementById("links").classList.toggle("filtered", !isAny);
    for (const grid of grids) grid.style.display = "";
    groups.forEach(fit);
    document.querySelectorAll(".group").forEach(fit);
    const ofLinks = shownLinks + " of " + all.size + " links shown", ofRows = shown + " of " + rows.length + " rows shown";
    document.querySelectorAll(".shown").forEach((place) => {
      place.textContent = isAny ? "" : place.closest("#results") ? ofRows : ofLinks;
    });
  };
  let waiting = 0;
  form.addEventListener("input", () => {
    clearTimeout(waiting);
    waiting = setTimeout(filter, 120);
  });
  form.addEventListener("submit", (event) => event.preventDefault());
  form.addEventListener("reset", () => {
    for (const field of form.elements) field.value = "";
    filter();
  });

  // Each returns what a row is sorted by, or null for a row without it, which comes last in both directions.
  const keys = {
    order: (row, i) => Number(row.dataset.order || i),
    rank: (row) => Number(row.dataset.rank),
    text: (row, i, column) => row.cells[column].textContent.replace(/^-$/, "") || null,
    number: (row, i, column) => {
      const found = /-?\d+(\.\d+)?/.exec(row.cells[column].textContent);
      return found ? Number(found[0]) : null;
    },
  };
  Array.from(table.tHead.rows[0].cells).forEach((cell, column) => {
    const key = keys[cell.dataset.sort];
    const button = document.createElement("button");
    button.type = "button";
    button.append(...cell.childNodes);
    cell.append(button);
    button.addEventListener("click", () => {
      const down = cell.getAttribute("aria-sort") === "ascending";
      for (const other of table.tHead.rows[0].cells) other.removeAttribute("aria-sort");
      cell.setAttribute("aria-sort", down ? "descending" : "ascending");
      const sorted = rows.map((row, i) => [key(row, i, column), i]);
      sorted.sort(([a, i], [b, j]) => {
        if (a === null || b === null) return (a === null) - (b === null) || i - j;
        const before = a < b ? -1 : a > b ? 1 : 0;
        return (down ? -before : before) || i - j;
      });
      let next = 0;
      groups.forEach((group, i) => {
        group.append(...sorted.slice(next, next + sizes[i]).map(([, row]) => rows[row]));
        next += sizes[i];
        fit(group);
      });
    });
  });
  table.classList.add("sortable");
  form.hidden = false;
  addEventListener("hashchange", openTarget);
  // The address does not change where it is that already.
  addEventListener("click", (event) => {
    const link = event.target.closest("a");
    if (link && link.hash && link.hash === location.hash) openTarget();
  });
  openTarget();
})();
