'use strict';
// Opens a report in a tab of the browser and collects what is wrong with it there.

const { execFileSync } = require('node:child_process');
const { pathToFileURL } = require('node:url');

const axe = require('axe-core');

const { contrast, luminance } = require('./colour.js');
const drawn = require('./drawn.js');

const ruleTags = ['wcag2a', 'wcag2aa', 'best-practice'];
const patience = 300000; // milliseconds for one step of the browser, on a busy machine
const darkest = 0.05; // the most luminance of a dark ground
const lightest = 0.9; // the least luminance of a light ground
const leastContrast = 4.5; // of a text, by WCAG

class View {
    constructor(report, width, scheme) {
        Object.assign(this, { report, width, scheme, findings: [] });
    }

    add(check, descriptions) {
        for (const description of descriptions) {
            this.findings.push({ check, where: `${this.width} px, ${this.scheme}`, description });
        }
    }

    async open(browser) {
        const { width, scheme } = this;
        this.page = await browser.newPage();
        await this.page.setViewport({ width, height: 900 });
        await this.page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
        await this.listen();
        await this.page.goto(pathToFileURL(this.report.file).href, { timeout: patience });
    }

    // Collects errors and requests. Only the page itself and its linked photos may be loaded.
    async listen() {
        const { page, report } = this;
        const allowed = [report.file, ...report.linked].map((file) => pathToFileURL(file).href);
        page.on('console', (message) => message.type() === 'error' && this.add('console error', [message.text()]));
        page.on('pageerror', (error) => this.add('page error', [error.message]));
        page.on('dialog', (dialog) => {
            this.add('dialog', [dialog.message()]);
            dialog.dismiss();
        });
        await page.exposeFunction('reportViolation', (text) => this.add('content security policy', [text]));
        await page.evaluateOnNewDocument(() => {
            document.addEventListener('securitypolicyviolation', (event) =>
                window.reportViolation(`${event.violatedDirective}: ${event.blockedURI}`));
        });
        await page.setRequestInterception(true);
        page.on('request', (request) => {
            const url = request.url();
            if (allowed.includes(url) || url.startsWith('data:')) {
                request.continue();
            } else {
                this.add('request', [url]);
                request.abort();
            }
        });
    }

    async checkScreen() {
        const { page, report, scheme } = this;
        this.add('photo', await page.evaluate(drawn.findMissingPhotos, report.photos));
        this.add('horizontal scrolling', await page.evaluate(drawn.findScrolling));
        const texts = await page.evaluate(drawn.findMisplacedTexts);
        this.add('text outside of its picture', texts.outside);
        this.add('overlapping texts', texts.overlapping);
        this.add('unnamed picture', await page.evaluate(drawn.findUnnamedPictures));
        await this.checkGround(scheme === 'dark');
        await this.checkContrast();
        await this.checkAccess();
    }

    async checkGround(isDark) {
        const ground = luminance(await this.page.evaluate(drawn.colourOfGround));
        if (isDark ? ground > darkest : ground < lightest) {
            this.add('ground', [`the luminance of the ground is ${ground.toFixed(3)}`]);
        }
    }

    async checkContrast() {
        for (const { name, colour, under } of await this.page.evaluate(drawn.coloursOfTexts)) {
            const found = contrast(colour, under);
            if (found < leastContrast) {
                this.add('faint text', [`${name}: the contrast of ${colour} on ${under} is ${found.toFixed(2)}`]);
            }
        }
    }

    // Runs axe-core. Sets `rules`, the rules that it applied to the page.
    async checkAccess() {
        await this.page.evaluate(axe.source);
        const result = await this.page.evaluate((tags) =>
            window.axe.run(document, { runOnly: tags, resultTypes: ['violations', 'passes'] }), ruleTags);
        this.rules = [...result.violations, ...result.passes].map((rule) => rule.id);
        for (const { id, help, nodes } of result.violations) {
            this.add('accessibility', nodes.map((node) => `${id}: ${help}: ${node.html.slice(0, 120)}`));
        }
        if (!this.rules.includes('color-contrast')) {
            this.add('accessibility', ['color-contrast was not checked']);
        }
    }

    // Prints the page to a PDF file. Sets `sheets`, the number of its pages.
    async checkPaper(file) {
        const { page } = this;
        await page.emulateMediaType('print');
        await this.checkGround(false);
        this.add('folded table in print', await page.evaluate(drawn.findFoldedTables));
        await page.pdf({ path: file, format: 'A4', timeout: patience });
        const bare = (text) => text.normalize('NFKC').replace(/[\s\p{Cf}]/gu, '');
        const sheets = execFileSync('pdftotext', [file, '-'], { maxBuffer: 1 << 28 }).toString().split('\f');
        this.sheets = sheets.filter((text) => text.trim() !== '').length;
        if (this.sheets === 0) {
            this.add('print', ['no page of the PDF file has a text']);
        }
        const text = bare(sheets.join(''));
        const missing = (await page.evaluate(drawn.headings)).filter((heading) => !text.includes(bare(heading)));
        this.add('print', missing.map((heading) => `the PDF file has no heading "${heading.slice(0, 80)}"`));
    }

    async close() {
        await this.page.close();
    }
}

module.exports = { View, patience, ruleTags };
