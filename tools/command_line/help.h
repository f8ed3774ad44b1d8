#pragma once

// The texts of `plantjournal --help` and of the manual page.

constexpr const char* Purpose = "keep a plant journal: plants, care, harvests, photos, health and notes";

constexpr const char* Notes = R"(
The journal is the file that --file names. Without --file it is the file that PLANTJOURNAL_FILE names, and else
plantjournal/journal.db in the XDG data directory ($XDG_DATA_HOME, by default ~/.local/share). A journal with an earlier
schema is backed up in its directory before it is migrated.

A plant is named by its UUID, by a prefix of its UUID, or by its name; this must match exactly one plant. A date is
today, yesterday, YYYY-MM-DD, YYYY-MM or YYYY; an empty text clears a date. Names such as --stage flower are accepted in
any letter case. --json prints records with their field names; a text that is not UTF-8 becomes an object with its
bytes, {"Hex": "..."}.

Colours are used on a terminal only, and not if NO_COLOR is set. The exit status is 0 on success, 1 on failure, and 2
for a mistake in the command line.

Examples:
  plantjournal plant add Basil --strain Genovese --stage seed
  plantjournal feed Basil --product "Bloom A" --amount-ml 500 --ph 6.2
  plantjournal timeline Basil
  plantjournal backup /media/stick/journal.db
)";
