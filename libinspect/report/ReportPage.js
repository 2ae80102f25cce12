"use strict";
(() => {
  // The page is complete without this: it filters and sorts the table of results, and opens blocks and goes there
  // where the browser does not do that by itself.
  const openTarget = () => {
    const target = document.getElementById(location.hash.slice(1));
    const block = target && target.closest("details");
    if (!block) return;
    block.open = true;
    target.scrollIntoView();
  };
  addEventListener("hashchange", openTarget);
  openTarget();

  const table = document.getElementById("table"), form = document.getElementById("filter");
  if (!table || !form) return;
  const groups = Array.from(table.tBodies), sizes = groups.map((group) => group.rows.length);
  const rows = groups.flatMap((group) => Array.from(group.rows));
  const texts = rows.map((row) => row.textContent.toLowerCase());
  const count = document.getElementById("count");
  const filter = () => {
    const verdict = form.elements.verdict.value, medium = form.elements.medium.value;
    const words = form.elements.text.value.toLowerCase().split(/\s+/);
    let shown = 0;
    rows.forEach((row, i) => {
      const fits = (!verdict || row.dataset.verdict === verdict) && (!medium || row.dataset.medium === medium) &&
        words.every((word) => texts[i].includes(word));
      row.hidden = !fits;
      shown += fits ? 1 : 0;
    });
    count.textContent = shown === rows.length ? "" : shown + " of " + rows.length + " rows shown";
  };
  let waiting = 0;
  form.addEventListener("input", () => {
    clearTimeout(waiting);
    waiting = setTimeout(filter, 120);
  });
  form.addEventListener("submit", (event) => event.preventDefault());

  // Each returns what a row is sorted by, or null for a row without it, which comes last in both directions.
  const keys = {
    order: (row, i) => i,
    rank: (row) => Number(row.dataset.rank),
    text: (row, i, column) => row.cells[column].textContent || null,
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
      });
    });
  });
  table.classList.add("sortable");
  form.hidden = false;
})();
