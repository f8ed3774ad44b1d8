'use strict';
// Functions that run in the page. Those that begin with "find" describe what is wrong with the page as it is drawn.

// Describes content that is wider than the window.
function findScrolling() {
    const { scrollWidth, clientWidth } = document.documentElement;
    return scrollWidth <= clientWidth ? [] : [`the page is ${scrollWidth} px wide in a window of ${clientWidth} px`];
}

// Describes texts of pictures that are drawn outside of their picture, or over another text of it.
function findMisplacedTexts() {
    const tolerance = 2;
    const short = (text) => `"${text.textContent.slice(0, 40)}"`;
    const findings = { outside: [], overlapping: [] };
    for (const picture of document.querySelectorAll('svg')) {
        const frame = picture.getBoundingClientRect();
        const name = picture.querySelector('title')?.textContent.slice(0, 60);
        const texts = [...picture.querySelectorAll('text')]
            .map((text) => ({ text, box: text.getBoundingClientRect() }))
            .filter(({ box }) => box.width > 0 && box.height > 0); // the others are hidden
        for (const [index, { text, box }] of texts.entries()) {
            const excess = Math.max(frame.left - box.left, box.right - frame.right, frame.top - box.top,
                box.bottom - frame.bottom);
            if (excess > tolerance) {
                findings.outside.push(`${name}: ${short(text)}: ${excess.toFixed(1)} px`);
            }
            for (const other of texts.slice(index + 1)) {
                const width = Math.min(box.right, other.box.right) - Math.max(box.left, other.box.left);
                const height = Math.min(box.bottom, other.box.bottom) - Math.max(box.top, other.box.top);
                if (width > tolerance && height > tolerance) {
                    findings.overlapping.push(`${name}: ${short(text)} and ${short(other.text)}: ` +
                        `${width.toFixed(1)} x ${height.toFixed(1)} px`);
                }
            }
        }
    }
    return findings;
}

// Describes pictures without a role, a name or a description.
function findUnnamedPictures() {
    const findings = [];
    for (const picture of document.querySelectorAll('svg')) {
        const has = (child) => Boolean(picture.querySelector(`:scope > ${child}`)?.textContent.trim());
        const missing = ['title', 'desc'].filter((child) => !has(child));
        if (picture.getAttribute('role') !== 'img') {
            missing.push('role img');
        }
        if (missing.length > 0) {
            findings.push(`${picture.getAttribute('aria-labelledby') ?? 'svg'}: no ${missing.join(', no ')}`);
        }
    }
    return findings;
}

// Describes photos that the browser could not draw. expected is the number of photos.
async function findMissingPhotos(expected) {
    const photos = [...document.images];
    const findings = photos.length === expected ? [] : [`${photos.length} photos, expected ${expected}`];
    for (const photo of photos) {
        photo.loading = 'eager';
        try {
            await photo.decode();
        } catch {
            findings.push(`${photo.getAttribute('src').slice(0, 80)} is not drawn`);
        }
    }
    return findings;
}

// Returns the colour of the ground of the page.
function colourOfGround() {
    return getComputedStyle(document.body).backgroundColor;
}

// Returns the colour of each text of a picture, and the colour under it. axe-core does not check these texts.
function coloursOfTexts() {
    const ground = getComputedStyle(document.body).backgroundColor;
    const colours = [];
    for (const picture of document.querySelectorAll('svg')) {
        const under = []; // the areas that are drawn before the text
        for (const mark of picture.querySelectorAll('rect, text')) {
            const box = mark.getBoundingClientRect();
            const colour = getComputedStyle(mark).fill;
            if (mark.localName === 'rect') {
                under.unshift({ box, colour });
            } else if (box.width > 0) {
                const x = (box.left + box.right) / 2;
                const y = (box.top + box.bottom) / 2;
                const area = under.find((other) => other.colour !== 'none' && other.box.left < x &&
                    x < other.box.right && other.box.top < y && y < other.box.bottom);
                colours.push({
                    name: `${picture.querySelector('title')?.textContent}: "${mark.textContent.slice(0, 40)}"`,
                    colour,
                    under: area?.colour ?? ground,
                });
            }
        }
    }
    return colours;
}

// Describes folded tables whose contents are not drawn.
function findFoldedTables() {
    const findings = [];
    for (const details of document.querySelectorAll('details')) {
        const hidden = [...details.children].some((child) => child.localName !== 'summary' &&
            !(child.checkVisibility({ contentVisibilityAuto: true }) && child.getBoundingClientRect().height > 0));
        if (hidden) {
            findings.push(`${details.closest('section')?.id ?? 'page'}: the table is folded`);
        }
    }
    return findings;
}

function headings() {
    return [...document.querySelectorAll('h1, h2')].map((heading) => heading.textContent);
}

module.exports = {
    colourOfGround, coloursOfTexts, findFoldedTables, findMisplacedTexts, findMissingPhotos, findScrolling,
    findUnnamedPictures, headings,
};
