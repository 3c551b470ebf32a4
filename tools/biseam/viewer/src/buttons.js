// What the viewer's bar lacks for keyboards and screen readers, and the switch for bands and seams.

export const SEAM_SWITCH = "seams";

export function seamSwitch(toggle) {
  return {
    id: SEAM_SWITCH,
    title: "Bands and seams (S)",
    content: '<span class="seam-switch"><span class="track"></span><span class="label">Bands and seams</span></span>',
    collapsable: false,
    onClick: toggle,
  };
}

export function markSwitch(viewer, checked) {
  const element = viewer.navbar.getButton(SEAM_SWITCH).container;
  element.setAttribute("role", "switch");
  element.setAttribute("aria-checked", String(checked));
}

function clickOnSpace(event) {
  if (event.key !== " ") return;
  event.preventDefault();
  event.stopPropagation();
  event.currentTarget.click();
}

// The bar's buttons are plain elements with a title, and so is the caption, which does nothing.
export function nameButtons(root) {
  root.querySelector(".psv-caption").removeAttribute("tabindex");
  for (const element of root.querySelectorAll(".psv-button[tabindex], .psv-panel-close-button")) {
    if (!element.hasAttribute("role")) element.setAttribute("role", "button");
    element.setAttribute("aria-label", element.title);
    element.addEventListener("keydown", clickOnSpace);
  }
  root.querySelector(".psv-video-bigbutton")?.setAttribute("aria-label", "Play");
}
