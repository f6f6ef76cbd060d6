// The theme styles tables by their class.
for (const table of document.querySelectorAll(".rst-content table")) table.classList.add("docutils");
