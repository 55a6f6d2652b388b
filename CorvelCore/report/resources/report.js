// Enhancements only: the page is complete without this script. It makes the tables sortable by
// their headers and shows a tile's details beside the pointer at once (the SVG title already
// shows them after the browser's hover delay).
(function () {
  "use strict";

  function cellValue(row, column, kind) {
    var cell = row.cells[column];
    if (!cell) return kind === "number" ? 0 : "";
    if (kind === "number") return Number(cell.getAttribute("data-value") || 0);
    return cell.textContent.toLowerCase();
  }

  function sortBy(table, column, kind, header) {
    var body = table.tBodies[0];
    var ascending = header.getAttribute("aria-sort") !== "ascending";
    var rows = Array.prototype.slice.call(body.rows);
    rows.sort(function (a, b) {
      var x = cellValue(a, column, kind), y = cellValue(b, column, kind);
      var order = x < y ? -1 : x > y ? 1 : 0;
      return ascending ? order : -order;
    });
    rows.forEach(function (row) { body.appendChild(row); });
    Array.prototype.forEach.call(table.tHead.rows[0].cells, function (cell) { cell.removeAttribute("aria-sort"); });
    header.setAttribute("aria-sort", ascending ? "ascending" : "descending");
  }

  Array.prototype.forEach.call(document.querySelectorAll("table.sortable"), function (table) {
    Array.prototype.forEach.call(table.tHead.rows[0].cells, function (header, column) {
      var kind = header.getAttribute("data-sort");
      if (!kind) return;
      var button = document.createElement("button");
      button.type = "button";
      button.textContent = header.textContent;
      header.textContent = "";
      header.appendChild(button);
      button.addEventListener("click", function () { sortBy(table, column, kind, header); });
    });
  });

  var tooltip = document.createElement("div");
  tooltip.id = "tooltip";
  tooltip.setAttribute("role", "tooltip");
  document.body.appendChild(tooltip);
  Array.prototype.forEach.call(document.querySelectorAll("svg.treemap rect.tile"), function (tile) {
    var title = tile.querySelector("title");
    if (!title) return;
    tile.addEventListener("mousemove", function (event) {
      tooltip.textContent = title.textContent;
      tooltip.style.display = "block";
      tooltip.style.left = Math.min(event.clientX + 14, window.innerWidth - 500) + "px";
      tooltip.style.top = event.clientY + 14 + "px";
    });
    tile.addEventListener("mouseleave", function () { tooltip.style.display = "none"; });
  });
})();
