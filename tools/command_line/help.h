#pragma once

// The texts of `plantjournal --help` and of the manual page.

constexpr const char* Purpose = "keep a plant journal: plants, care, harvests, photos, health and notes";

constexpr const char* Notes = R"(
The option --file names the journal file. Without it, the environment variable PLANTJOURNAL_FILE names the file. If
that is not set either, the file is plantjournal/journal.db in the XDG data directory ($XDG_DATA_HOME, by default
~/.local/share). A journal with an earlier schema is backed up in its directory before it is migrated.

PLANT is the UUID of a plant, a prefix of its UUID, or its name. It must match exactly one plant. DATE is YYYY-MM-DD,
YYYY-MM, YYYY, today, yesterday, tomorrow, a weekday such as monday or mon (the last one, today included), or 3d, 2w or
1m (so many days, weeks or months ago); an empty text clears the date. The case of letters does not matter in values
such as Flower in --stage Flower. --json prints records with their field names. A text that is not UTF-8 is printed as
an object with its bytes in hexadecimal digits, {"Hex": "..."}.

A change is reported in one line. With --quiet, only the identifier of what was stored is printed: the UUID of a plant,
the name of a strain, or the row ID of another record. A deletion then prints nothing.

Output to a terminal has colours unless NO_COLOR is set. The exit status is 0 on success, 1 on failure, and 2 for a
mistake in the command line.

Examples:
  plantjournal plant add Basil --strain Genovese --stage seed
  plantjournal feed Basil --product "Bloom A" 500ml --ph 6.2
  plantjournal timeline Basil
  plantjournal backup /media/stick/journal.db
)";
