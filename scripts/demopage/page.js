// page.js: the line between original and decoded, by slider, keys, mouse and finger; and which picture is shown.
// SPDX-License-Identifier: BSD-2-Clause
"use strict";
for (const section of document.querySelectorAll("section.photograph")) {
  const find = (selector) => section.querySelector(selector);
  const frame = find(".frame"), stage = find(".stage"), slider = find(".slider input"), size = find("button");

  const move = (percent) => {
    slider.value = percent;
    stage.style.setProperty("--at", slider.value + "%");
    slider.setAttribute("aria-valuetext", "original left of " + Math.round(slider.value) + " %");
  };
  slider.addEventListener("input", () => move(slider.value));

  // A finger at full size scrolls the picture; there the slider below moves the line.
  const drag = (event) => {
    if (event.pointerType !== "mouse" && !frame.classList.contains("fit")) return;
    const box = stage.getBoundingClientRect();
    move(100 * (event.clientX - box.left) / box.width);
  };
  stage.addEventListener("pointerdown", (event) => {
    if (event.button !== 0) return;
    event.preventDefault(); // a picture is not to be dragged away
    stage.setPointerCapture(event.pointerId);
    drag(event);
  });
  stage.addEventListener("pointermove", (event) => {
    if (stage.hasPointerCapture(event.pointerId)) drag(event);
  });

  const setFit = (fit) => {
    frame.classList.toggle("fit", fit);
    size.textContent = fit ? "Full size" : "Fit to the window";
  };
  size.addEventListener("click", () => setFit(!frame.classList.contains("fit")));
  // On a phone the whole picture comes first.
  setFit(section.clientWidth < 600);
  const offerSize = () => { size.hidden = find("img.original").getAttribute("width") <= find("fieldset").clientWidth; };
  window.addEventListener("resize", offerSize);
  offerSize();

  const show = (input) => {
    const { folder, told } = input.dataset;
    find(".stage .decoded").src = folder + "decoded.png";
    find(".map").src = folder + "difference.png";
    for (const part of ["original", "decoded", "difference"]) find(".closer ." + part).src = folder + "closer-" + part + ".png";
    for (const text of section.querySelectorAll(".told")) text.textContent = told;
    find(".where").textContent = input.dataset.where;
  };
  for (const input of section.querySelectorAll(".choice input")) input.addEventListener("change", () => show(input));
  // A browser that comes back to the page remembers what was chosen.
  show(find(".choice input:checked"));
  move(slider.value);
}
