'use strict';
// Checks reports in Chromium: node check.js COMMAND JOURNAL DIRECTORY BROWSER
// COMMAND is the path of the command, JOURNAL that of the demonstration's journal, BROWSER that of Chromium. The
// reports are written to DIRECTORY.

const fs = require('node:fs');
const path = require('node:path');

const axe = require('axe-core');
const puppeteer = require('puppeteer-core');

const { brokenPages } = require('./broken_pages.js');
const { writeReports } = require('./reports.js');
const { View, patience, ruleTags } = require('./view.js');

const widths = [390, 1280, 1600];
const schemes = ['light', 'dark'];

// Returns the bytes of a small JPEG file.
async function makePicture(browser) {
    const page = await browser.newPage();
    const url = await page.evaluate(() => {
        const canvas = Object.assign(document.createElement('canvas'), { width: 32, height: 24 });
        const context = canvas.getContext('2d');
        context.fillStyle = '#2f9170';
        context.fillRect(0, 0, 32, 24);
        return canvas.toDataURL('image/jpeg');
    });
    await page.close();
    return Buffer.from(url.split(',')[1], 'base64');
}

// Looks at one report in one window, and on paper if `paper` names a file. Returns the view, closed.
async function look(browser, report, width, scheme, paper) {
    const view = new View(report, width, scheme);
    await view.open(browser);
    await view.checkScreen();
    if (paper) {
        await view.checkPaper(paper);
    }
    await view.close();
    return view;
}

// Checks one report at all widths, in light and dark. Prints one line. Returns the views.
async function checkReport(browser, report) {
    const views = [];
    for (const width of widths) {
        for (const scheme of schemes) {
            // The window decides nothing of the paper. A dark screen must not darken it.
            const isPrinted = width === 1280 && scheme === 'dark';
            const paper = isPrinted && report.file.replace(/html$/, 'pdf');
            views.push(await look(browser, report, width, scheme, paper));
        }
    }
    const findings = views.flatMap((view) => view.findings);
    const { sheets } = views.find((view) => view.sheets !== undefined);
    console.log(`${report.name}: views: ${views.length}; printed pages: ${sheets}; ` +
        (findings.length === 0 ? 'no findings' : `findings: ${findings.length}`));
    for (const { check, where, description } of findings) {
        console.log(`  ${check} (${where}): ${description}`);
    }
    return views;
}

// Checks that each broken copy of the report is refused. Returns the names of those that are not.
async function checkBrokenPages(browser, report) {
    const html = fs.readFileSync(report.file, 'utf8');
    const accepted = [];
    for (const { name, check, change, width = 1280, scheme = 'light', isPrinted = false } of brokenPages) {
        const file = path.join(path.dirname(report.file), 'broken.html');
        const broken = change(html);
        if (broken === html) {
            throw new Error(`broken page "${name}": the report does not contain what is to be broken`);
        }
        fs.writeFileSync(file, broken);
        const paper = isPrinted && file.replace(/html$/, 'pdf');
        const { findings } = await look(browser, { ...report, file }, width, scheme, paper);
        if (!findings.some((finding) => finding.check === check)) {
            const found = [...new Set(findings.map((finding) => finding.check))];
            accepted.push(`${name}: expected "${check}", found: ${found.join(', ') || 'nothing'}`);
        }
    }
    console.log(`broken pages: ${brokenPages.length - accepted.length} of ${brokenPages.length} refused`);
    accepted.forEach((text) => console.log(`  ${text}`));
    return accepted;
}

async function main(command, season, directory, executablePath) {
    const browser = await puppeteer.launch({
        executablePath,
        args: process.getuid() === 0 ? ['--no-sandbox'] : [], // the sandbox refuses to start as root
        protocolTimeout: patience,
    });
    try {
        const reports = writeReports(command, season, directory, await makePicture(browser));
        const accepted = await checkBrokenPages(browser, reports.find(({ name }) => name === 'linked-photos'));
        const views = [];
        const waiting = [...reports];
        const checkWaiting = async () => {
            for (let report = waiting.shift(); report; report = waiting.shift()) {
                views.push(...await checkReport(browser, report));
            }
        };
        await Promise.all([checkWaiting(), checkWaiting()]); // a tab often waits for the browser
        const findings = views.flatMap((view) => view.findings);
        const rules = new Set(views.flatMap((view) => view.rules));
        console.log(`axe-core ${axe.version} (${ruleTags.join(', ')}) applied ${rules.size} rules: ` +
            [...rules].sort().join(' '));
        console.log(`${await browser.version()}: reports: ${reports.length}; views: ${views.length}; ` +
            `findings: ${findings.length}; broken pages accepted: ${accepted.length}`);
        return findings.length + accepted.length === 0 ? 0 : 1;
    } finally {
        await browser.close();
    }
}

main(...process.argv.slice(2)).then((status) => {
    process.exitCode = status;
});
