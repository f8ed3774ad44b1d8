'use strict';
// Computes with colours as style sheets write them, such as "rgb(31, 35, 40)".

// Returns the luminance of a colour, from 0 (black) to 1 (white), as WCAG defines it.
function luminance(colour) {
    const [red, green, blue] = colour.match(/[\d.]+/g).map((part) => {
        const share = Number(part) / 255;
        return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

// Returns the contrast of two colours, from 1 to 21.
function contrast(first, second) {
    const [dark, light] = [luminance(first), luminance(second)].sort((a, b) => a - b);
    return (light + 0.05) / (dark + 0.05);
}

module.exports = { contrast, luminance };
