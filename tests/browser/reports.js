'use strict';
// Writes the reports that the checks look at, with the command.

const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

const longName = 'Letters'.repeat(1429).slice(0, 10000);

const hostileNames = [
    '<script>alert(1)</script>',
    '</title></desc></svg><img src=x onerror=alert(1)>',
    '"Quotes" \'and\' & ]]> &amp; --> <!--',
    '\u05e2\u05d2\u05d1\u05e0\u05d9\u05d9\u05d4 \u0628\u0646\u062f\u0648\u0631\u0629',
    '\u202eright to left \u2067',
    '\u{1f345}\u{1f469}\u{1f3fd}\u200d\u{1f33e} \u0e4d\u0301\u0316',
    'W'.repeat(70),
    'M\u0416\u0429@%'.repeat(14) + '\u6c34\u8349\u{1f345}\u{1f469}\u{1f3fd}\u200d\u{1f33e}2\ufe0f\u20e3\u263a\ufe0f'.repeat(9),
    longName,
];

class Reports {
    // command and season are the paths of the command and of the demonstration's journal. The reports are written to
    // directory. picture holds the bytes of a JPEG file.
    constructor(command, season, directory, picture) {
        Object.assign(this, { command, season, directory });
        this.list = [];
        this.photos = ['first.jpg', 'second.jpg'].map((name) => path.join(directory, name));
        this.photos.forEach((file) => fs.writeFileSync(file, picture));
    }

    run(journal, ...words) {
        execFileSync(this.command, ['--file', journal, ...words], { stdio: ['ignore', 'pipe', 'inherit'] });
    }

    // Returns the path of a new journal, to which fill writes.
    journal(name, fill) {
        const journal = path.join(this.directory, `${name}.db`);
        fs.rmSync(journal, { force: true });
        fill((...words) => this.run(journal, ...words));
        return journal;
    }

    // photos: the number of photos that the page shows. linked: the files to which the page links.
    write(name, journal, { options = [], photos = 0, linked = [] } = {}) {
        const file = path.join(this.directory, `${name}.html`);
        this.run(journal, 'report', file, '--overwrite', ...options);
        this.list.push({ name, file, photos, linked });
    }
}

// Records a season of one plant, so that each picture shows it.
function growPlant(run, name, { month = '01', product = 'Bloom A', mother = [] } = {}) {
    const date = (day) => ['--date', `2026-${month}-${day}`];
    run('plant', 'add', '--name', name, '--strain', `Strain of ${name}`, '--stage', 'seed', '--tent', name,
        '--seed-date', `2026-${month}-01`, '--notes', name, ...mother);
    run('stage', name, 'veg', ...date('06'));
    for (const day of ['07', '11', '15', '19']) {
        run('water', name, '500ml', ...date(day));
        run('feed', name, '300ml', '--product', product, '--ec', '1.8', '--ph', '6.2', ...date(day));
    }
    run('note', 'add', name, product, ...date('12'));
    run('health', 'add', name, product, '--severity', '2', ...date('14'));
    run('harvest', 'add', name, '--wet', '410', '--dry', '96.5', '--quality-rating', '8', ...date('28'));
}

function fillWithHostileNames(run) {
    hostileNames.forEach((name, index) => {
        const mother = index > 0 && index < 4 ? ['--mother', hostileNames[index - 1]] : [];
        growPlant(run, name, { month: `0${index + 1}`, product: name, mother });
    });
}

function fillWithPhotos(run, photos) {
    growPlant(run, 'Basil');
    photos.forEach((photo, index) =>
        run('photo', 'add', 'Basil', photo, '--caption', 'First <b>flower</b>', '--date', `2026-01-1${index}`));
}

// Writes all reports. Returns their list.
function writeReports(command, season, directory, picture) {
    const reports = new Reports(command, season, directory, picture);
    const photos = reports.photos;
    const empty = reports.journal('empty', (run) => {
        run('plant', 'add', 'Basil');
        run('plant', 'delete', 'Basil', '--yes');
    });
    const one = reports.journal('one', (run) => growPlant(run, 'Basil'));
    const tenYears = path.join(directory, 'ten-years.db');
    fs.copyFileSync(empty, tenYears);
    execFileSync('sqlite3', ['-bail', tenYears], { input: fs.readFileSync(path.join(__dirname, 'ten_years.sql')) });
    const undated = reports.journal('undated', (run) => {
        run('plant', 'add', 'Basil');
        run('water', 'Basil', '500ml', '--care-date=');
    });
    const hostile = reports.journal('hostile', fillWithHostileNames);
    const pictures = reports.journal('pictures', (run) => fillWithPhotos(run, photos));

    reports.write('season', season);
    reports.write('plant-of-season', season, { options: ['--plant', 'Reference'] });
    reports.write('empty', empty);
    reports.write('one-plant', one);
    reports.write('ten-years', tenYears); // a thousand plants
    reports.write('undated-plant', undated);
    reports.write('hostile-names', hostile);
    reports.write('plant-with-script', hostile, { options: ['--plant', hostileNames[0]] });
    reports.write('plant-with-long-name', hostile, { options: ['--plant', longName] });
    reports.write('linked-photos', pictures, { photos: photos.length, linked: photos });
    reports.write('embedded-photos', pictures, { options: ['--embed-photos'], photos: photos.length });
    reports.write('plant-with-photos', pictures, {
        options: ['--plant', 'Basil'], photos: photos.length, linked: photos,
    });
    return reports.list;
}

module.exports = { writeReports };
