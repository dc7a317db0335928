// What is wrong with what the page shows now, as a list of texts; run in the page. With "fit" as first argument only what
// does not fit is looked for.
const [only] = arguments;
const faults = [];
const say = (what, element) =>
  faults.push(`${what}: <${element.tagName} class="${element.className}"> ${element.textContent.slice(0, 40)}`);
const channels = (text) => text.match(/[\d.]+/g).map(Number);
const luminance = (rgb) => {
  const [r, g, b] = rgb.map((c) => (c / 255 <= 0.04045 ? c / 255 / 12.92 : ((c / 255 + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const over = ([r, g, b, a = 1], ground) => [r, g, b].map((c, i) => c * a + ground[i] * (1 - a));
const groundOf = (element) => {
  if (element === null) return matchMedia("(prefers-color-scheme: dark)").matches ? [18, 18, 18] : [255, 255, 255];
  const [r, g, b, a = 1] = channels(getComputedStyle(element).backgroundColor);
  return a === 1 ? [r, g, b] : over([r, g, b, a], groundOf(element.parentElement));
};
const contrast = (element, color) => {
  const ground = groundOf(element);
  const [light, dark] = [luminance(ground), luminance(over(channels(color), ground))].sort((a, b) => b - a);
  return (light + 0.05) / (dark + 0.05);
};
const dialog = document.querySelector("dialog");
const isSeen = (element) =>
  element.checkVisibility() &&
  element.getClientRects().length > 0 &&
  !element.closest(".hidden, .skip, option") &&
  (dialog === null || dialog.contains(element));
const textsOf = (element) =>
  [...element.childNodes].filter((node) => node.nodeType === Node.TEXT_NODE && node.data.trim() !== "");

// A text that leaves its row, its control or a box that cuts what is beyond it. Only upwards and downwards may a box
// scroll.
const cutters = new Map();
const cuts = (box) => getComputedStyle(box).overflowX !== "visible" || box.matches(".row, button, .tag, .cell");
const cutter = (box) => {
  if (box === null || box === document.body) return document.documentElement;
  if (!cutters.has(box)) cutters.set(box, cuts(box) ? box : cutter(box.parentElement));
  return cutters.get(box);
};
const checkText = (element, text) => {
  const range = document.createRange();
  range.selectNodeContents(text);
  const box = cutter(element);
  const { left, right, top, bottom } = box.getBoundingClientRect();
  const scrolls = box === document.documentElement || getComputedStyle(box).overflowY !== "visible";
  for (const rect of range.getClientRects()) {
    if (rect.right > Math.min(right, innerWidth) + 1 || rect.left < Math.max(left, 0) - 1) return say("cut", element);
    if (!scrolls && (rect.bottom > bottom + 2 || rect.top < top - 2)) return say("cut below", element);
  }
  for (const { index, 0: number } of text.data.matchAll(/\d[\d,.]*/g)) {
    range.setStart(text, index);
    range.setEnd(text, index + number.length);
    if (range.getClientRects().length > 1) return say(`${number} in two lines`, element);
  }
};
const widthOf = (input) => {
  const style = getComputedStyle(input);
  const pen = document.createElement("canvas").getContext("2d");
  pen.font = `${style.fontWeight} ${style.fontSize} ${style.fontFamily}`;
  return pen.measureText(input.value).width + parseFloat(style.paddingLeft) + parseFloat(style.paddingRight);
};

if (document.documentElement.scrollWidth > innerWidth) say("wider than the screen", document.body);
for (const element of document.body.querySelectorAll("*")) {
  const texts = textsOf(element);
  const isControl = element.matches("a, button, select, input, summary");
  if ((texts.length === 0 && !isControl) || !isSeen(element)) continue;
  for (const text of texts) checkText(element, text);
  if (element.matches("input:not([type])") && widthOf(element) > element.offsetWidth) say("cut in its field", element);
  if (only === "fit" || element.closest(":disabled")) continue;
  const style = getComputedStyle(element);
  if (texts.length > 0 || element.matches("input, select")) {
    const points = parseFloat(style.fontSize) * 0.75;
    const isLarge = points >= 18 || (points >= 14 && style.fontWeight >= 700);
    const needed = isLarge ? 3 : 4.5;
    const faint = element.matches("[placeholder]") ? getComputedStyle(element, "::placeholder").color : style.color;
    for (const color of [style.color, faint]) {
      if (contrast(element, color) < needed) say(`contrast ${contrast(element, color).toFixed(2)}`, element);
    }
  }
  const target = element.matches("input") ? (element.closest("label") ?? element) : element;
  const size = target.getBoundingClientRect();
  const isSmall = Math.min(size.width, size.height) < 43.9;
  if (isSmall && isControl) say("too small to touch", element);
}
return faults;
