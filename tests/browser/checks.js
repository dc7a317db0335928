// What is wrong with what the page shows now, as a list of texts; run in the page by pagetest.py.
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
const contrast = (element, style) => {
  const ground = groundOf(element);
  const [light, dark] = [luminance(ground), luminance(over(channels(style.color), ground))].sort((a, b) => b - a);
  return (light + 0.05) / (dark + 0.05);
};
const isSeen = (element) =>
  element.checkVisibility() && element.getClientRects().length > 0 && !element.closest(".hidden, .skip, :disabled");
const hasText = (element) =>
  [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim() !== "");

if (document.documentElement.scrollWidth > innerWidth) say("wider than the screen", document.body);
for (const element of document.body.querySelectorAll("*")) {
  if (!isSeen(element)) continue;
  const style = getComputedStyle(element);
  const box = element.getBoundingClientRect();
  if (hasText(element) || element.matches("input, select")) {
    const points = parseFloat(style.fontSize) * 0.75;
    const isLarge = points >= 18 || (points >= 14 && style.fontWeight >= 700);
    if (contrast(element, style) < (isLarge ? 3 : 4.5)) say(`contrast ${contrast(element, style).toFixed(2)}`, element);
    if (box.right > innerWidth + 1 || box.left < -1) say("off the screen", element);
  }
  const target = element.matches("input") ? element.closest("label") ?? element : element;
  const size = target.getBoundingClientRect();
  const isSmall = Math.min(size.width, size.height) < 43.9;
  if (isSmall && element.matches("a, button, select, input, summary")) say("too small to touch", element);
}
return faults;
