"""Checks the links of a site, given its directory. Fails if a link refers to a missing file or a missing anchor."""
import html.parser
import pathlib
import re
import sys
import urllib.parse

site = pathlib.Path(sys.argv[1]).resolve()


class Page(html.parser.HTMLParser):
    """The links and the anchors of a page."""

    def __init__(self, text):
        super().__init__()
        self.links, self.anchors = [], {""}
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.links += [attributes[name] for name in ("href", "src", "data") if attributes.get(name)]
        self.anchors |= {attributes[name] for name in ("id", "name") if attributes.get(name)}


pages = {path: Page(path.read_text(encoding="utf-8")) for path in site.rglob("*.html")}
links = [(path, link) for path, page in pages.items() for link in page.links]
# The menu and the search results are scripts.
links += [(site / "index.html", link) for link in re.findall(r'url:"([^"]+)"', (site / "menudata.js").read_text())]
links += [(path, link) for path in site.glob("search/*.js") for link in re.findall(r"\['(\.\./[^']+)'", path.read_text())]

dead = set()
for path, link in links:
    parts = urllib.parse.urlsplit(link)
    if parts.scheme or parts.netloc:
        continue
    target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
    anchor = urllib.parse.unquote(parts.fragment)
    if not target.is_file() or site not in target.parents or (target in pages and anchor not in pages[target].anchors):
        dead.add(f"{path.relative_to(site)}: {link}")
for line in sorted(dead):
    print(line, file=sys.stderr)
print(f"{len(pages)} pages, {len(links)} links, {len(dead)} dead")
sys.exit(bool(dead) or not links)
