'use strict';
// Changes that break a report. The check of that name must refuse each of them.

const into = (place, text) => (html) => html.replace(place, `${place}${text}`);
const intoMain = (text) => into('<main>', text);
const intoPicture = (text) => into('</desc>', text);
const intoStyle = (text) => (html) => html.replace('</style>', `${text}</style>`);
const without = (pattern) => (html) => html.replace(pattern, '');
const withoutPolicy = without(/<meta http-equiv="Content-Security-Policy"[^>]*>/);

const brokenPages = [
    {
        name: 'a script that the policy blocks',
        check: 'content security policy',
        change: intoMain('<script>document.title = "changed"</script>'),
    },
    {
        name: 'a blocked script is also an error of the console',
        check: 'console error',
        change: intoMain('<script>document.title = "changed"</script>'),
    },
    {
        name: 'a script that fails',
        check: 'page error',
        change: (html) => withoutPolicy(intoMain('<script>throw new Error("failed")</script>')(html)),
    },
    {
        name: 'a script that opens a dialog',
        check: 'dialog',
        change: (html) => withoutPolicy(intoMain('<script>alert(1)</script>')(html)),
    },
    {
        name: 'a picture from another host',
        check: 'request',
        change: (html) => withoutPolicy(intoMain('<img alt="" src="http://127.0.0.1:9/picture.png"/>')(html)),
    },
    {
        name: 'a file that is not a photo of the journal',
        check: 'request',
        change: (html) => html.replace('src="first.jpg"', 'src="other.jpg"'),
    },
    {
        name: 'a photo without contents',
        check: 'photo',
        change: (html) => html.replace('src="first.jpg"', 'src="data:image/jpeg;base64,AAAA"'),
    },
    { name: 'a photo is left out', check: 'photo', change: without(/<img src="first.jpg"[^>]*>/) },
    {
        name: 'a wide line on a telephone',
        check: 'horizontal scrolling',
        change: intoMain('<p style="width:400px">wide</p>'),
        width: 390,
    },
    {
        name: 'a label at the left of its picture',
        check: 'text outside of its picture',
        change: intoPicture('<text x="-20" y="20" font-size="12">outside</text>'),
    },
    {
        name: 'a label under its picture',
        check: 'text outside of its picture',
        change: intoPicture('<text x="20" y="9999" font-size="12">outside</text>'),
    },
    {
        name: 'two labels at one place',
        check: 'overlapping texts',
        change: intoPicture('<text x="20" y="20">first</text><text x="24" y="22">second</text>'),
    },
    { name: 'a picture without a role', check: 'unnamed picture', change: without(' role="img"') },
    { name: 'a picture without a name', check: 'unnamed picture', change: without(/<title id=.*?<\/title>/) },
    { name: 'a picture without a description', check: 'unnamed picture', change: without(/<desc id=.*?<\/desc>/) },
    { name: 'a page without a language', check: 'accessibility', change: without(' lang="en"') },
    { name: 'a page without the main landmark', check: 'accessibility', change: without(/<\/?main>/g) },
    { name: 'a photo without a text', check: 'accessibility', change: without(/ alt="[^"]*"/) },
    { name: 'faint words in light', check: 'accessibility', change: intoStyle('main p{color:#999}') },
    {
        name: 'faint labels of pictures in light',
        check: 'faint text',
        change: intoStyle('.plant-chart .faint{--colour:#999}'),
    },
    {
        name: 'labels in the colour of their bars in dark',
        check: 'faint text',
        change: intoStyle('@media (prefers-color-scheme:dark){.plant-chart .veg{--colour:#e8eaed}}'),
        scheme: 'dark',
    },
    {
        name: 'faint words in dark',
        check: 'accessibility',
        change: intoStyle('@media (prefers-color-scheme:dark){main p{color:#555}}'),
        scheme: 'dark',
    },
    { name: 'a light ground in dark', check: 'ground', change: intoStyle('body{background:#fff}'), scheme: 'dark' },
    { name: 'a dark ground in light', check: 'ground', change: intoStyle('body{background:#222}') },
    {
        name: 'a dark ground on paper',
        check: 'ground',
        change: intoStyle('@media print{body{background:#222}}'),
        isPrinted: true,
    },
    {
        name: 'tables that stay folded on paper',
        check: 'folded table in print',
        change: without('details::details-content{display:block;content-visibility:visible;height:auto}'),
        isPrinted: true,
    },
    {
        name: 'headings that are not printed',
        check: 'print',
        change: intoStyle('@media print{h2{display:none}}'),
        isPrinted: true,
    },
    {
        name: 'an empty sheet of paper',
        check: 'print',
        change: intoStyle('@media print{header,main,footer{display:none}}'),
        isPrinted: true,
    },
];

module.exports = { brokenPages };
