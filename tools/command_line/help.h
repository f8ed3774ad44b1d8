#pragma once

// The texts of `plantjournal --help` and of the manual page.

constexpr const char* Purpose = "keep a plant journal: plants, care, harvests, photos, health and notes";

constexpr const char* Notes = R"(
The journal is the file that --file names, else PLANTJOURNAL_FILE, else journal.db under plantjournal in the XDG data
directory ($XDG_DATA_HOME, else ~/.local/share). A journal of an earlier version is backed up beside itself before it is
brought up to date.

A plant is named by its UUID, by a beginning of it, or by its name, as long as only one plant fits. Dates are today,
yesterday, YYYY-MM-DD, YYYY-MM or YYYY; an empty text clears a date. Names such as --stage flower may be written in any
letter case. --json prints records with the fields' own names; a text that is not UTF-8 is then an object with its bytes,
{"Hex": "..."}.

Colours are shown on a terminal only, and never where NO_COLOR is set. The status is 0 when done, 1 when refused or
failed, and 2 for a mistake in the command line.

Examples:
  plantjournal plant add Basil --strain Genovese --stage seed
  plantjournal feed Basil --product "Bloom A" --amount-ml 500 --ph 6.2
  plantjournal timeline Basil
  plantjournal backup /media/stick/journal.db
)";
