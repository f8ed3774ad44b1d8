#pragma once

#include <string>
#include <vector>

// The texts of `plantjournal help` and of the manual page that do not belong to one command.

constexpr const char* Purpose = "keep a plant journal: plants, care, harvests, photos, health and notes";

// Printed after the options of a command that takes a date.
constexpr const char* DateForms =
    "Dates: today, yesterday, tomorrow, a weekday, 3d, 2w or 1m ago, 2025-03-01, 2025-03, 2025.";

// A heading of the help, and the commands under it in their order. A command of a group is named with its group.
struct HelpHeading
{
    std::string Title;
    std::vector<std::string> Commands;
};

inline const std::vector<HelpHeading>& HelpHeadings()
{
    static const std::vector<HelpHeading> headings = {
        {"Keep the journal",
         {"plant", "feed", "water", "note", "stage", "transplant", "top", "train", "defoliate", "clone", "harvest",
          "photo", "health", "archive", "undo"}},
        {"Look",
         {"status", "due", "log", "search", "totals", "compare", "timeline", "plant list", "plant show", "plant tree",
          "report"}},
        {"Correct and complete", {"strain", "care", "event"}},
        {"Look after the file", {"info", "check", "backup", "restore", "salvage", "export", "import"}},
    };
    return headings;
}

// A section of the manual page.
struct ManualSection
{
    const char* Title;
    const char* Text; // empty lines separate paragraphs
};

constexpr ManualSection SectionsBeforeCommands[] = {
    {"DESCRIPTION", R"(
plantjournal keeps the journal of a grower in one SQLite file: plants and their strains, feedings and waterings, events
of the timeline, harvests, photos, health observations and notes. The first command that adds something creates the
file.

`plantjournal help` lists the commands. `plantjournal help COMMAND`, `plantjournal COMMAND help` and
`plantjournal COMMAND --help` describe one. The word help is a plant's or a strain's name where the journal has one of
this name; `plantjournal COMMAND --help` always prints the help.
)"},
    {"PLANTS", R"(
A command finds a plant by the first of these that any plant matches: its whole UUID; its exact name; its name
regardless of the case of letters; a prefix of its UUID of at least four characters. If several plants match, the
command lists them and does nothing.

The options --all, --strain, --tent and --stage of a command that changes plants select plants in the stages Seed,
Clone, Veg and Flower. They select by the state of today, whatever --date is.

The options --strain, --tent and --stage of a command that reads select plants in every stage. Archived plants are left
out unless they are named or --all or --stage archived is given; `status` and `due` show growing plants only.
)"},
    {"VALUES", R"(
A date is YYYY-MM-DD, YYYY-MM, YYYY, today, yesterday, tomorrow, a weekday such as monday or mon (the last one, today
included), or 3d, 2w or 1m (so many days, weeks or months ago). An empty text clears a date. --date stands for the date
of any record.

The case of letters does not matter in values such as Flower in --stage Flower. The word -- ends the options: what
follows it is an argument, even if it begins with a dash.
)"},
    {"OUTPUT", R"(
A change is reported in one line. With --quiet, only the identifier of what was stored is printed: the UUID of a plant,
the name of a strain, or the row ID of another record. A deletion then prints nothing.

--json prints records with the names of their fields. A text that is not UTF-8 is printed as an object with its bytes
in hexadecimal digits, {"Hex": "..."}. The commands that read across plants also print CSV, with --csv. Output to a
terminal has colours unless NO_COLOR is set.
)"},
};

constexpr ManualSection SectionsAfterCommands[] = {
    {"FILES", R"(
The option --file names the journal file. Without it, the environment variable PLANTJOURNAL_FILE names the file. If
that is not set either, the file is plantjournal/journal.db in the XDG data directory ($XDG_DATA_HOME, by default
~/.local/share). On macOS the default is ~/Library/Application Support, and on Windows the directory is %LOCALAPPDATA%.
A journal with an earlier schema is backed up in its directory before it is migrated.
)"},
    {"ENVIRONMENT", R"(
PLANTJOURNAL_FILE names the journal file. XDG_DATA_HOME and HOME name the directory of the journal where no file is
named. XDG_STATE_HOME and HOME name the directory of the dated backups and of what `plantjournal undo` needs. On
Windows, LOCALAPPDATA names both directories. NO_COLOR turns colours off.
)"},
    {"BACKUPS", R"(
`plantjournal backup` makes a backup with the date and time in its name. It keeps the newest of each of the last 7 days,
4 weeks and 12 months that have a backup, and removes the others. The backups are in plantjournal/backups in the XDG
state directory ($XDG_STATE_HOME, by default ~/.local/state; on macOS the default is ~/Library/Application Support, and
on Windows the directory is %LOCALAPPDATA%), in a directory for each journal, or below DIR with --to DIR. Other files
there are left alone. After the first change of a day, a notice offers a backup if the last one is more than seven days
old.

`plantjournal restore` puts a backup in the place of the journal. A backup is named by its file, by a date, or by a date
with a time as `plantjournal backup --list` shows it, in quotes: then it is the newest good backup of that day or time,
or before. Without a name, it is the newest good backup up to tomorrow, because the time zone can have changed; if the
time in its name is after the present time, a notice names the backup before it, too. A backup with a date after
tomorrow, which a wrong clock can have made, is restored only if its file or its date is named.

The present journal stays next to the restored one, with .before-restore- and the date after its name. Programs that
have the journal open go on with the restored one, unless the journal was damaged or the backup has an earlier schema:
then they must open it again, and a notice says so. `plantjournal undo` does not roll back a restoration, nor a change
from before it; restore the kept file instead.
)"},
    {"DAMAGED JOURNALS", R"(
`plantjournal restore` replaces a damaged journal with a backup, which is complete up to its date. Without a backup,
`plantjournal salvage DAMAGED DESTINATION` reads what is left in the damaged file and writes it to a new journal. It
changes neither the damaged file nor a file that exists at DESTINATION. Close the programs that write to the damaged
file first.

Some damage makes a journal look like the file of another program. The commands then report that it is not a
plantjournal file, and `plantjournal restore` does not replace it. Move the file away, and run `plantjournal restore`.

The table that it prints shows how many rows were read, how many are known to be missing, and why. The records of a lost
plant are kept under a plant with the name Lost plant and the prefix of its UUID. A changed byte inside a value can stay
unnoticed; a notice names each value that became impossible. Compare the new journal with what you remember.

`plantjournal check --repair --file DESTINATION` then restores missing events of care entries and harvest records, and
lists what else is wrong. `plantjournal restore DESTINATION` puts the new journal in the place of the damaged one, which
stays next to it.
)"},
    {"UNDO", R"(
`plantjournal undo` rolls back the last change that the command made, if nothing has changed the journal since. It
describes the change and asks first. There is one level.
)"},
    {"EXIT STATUS", R"(
0 on success, 1 on failure, 2 for a mistake in the command line. A message on standard error states the reason and what
to do next. A line that begins with "notice:" reports something unlikely and does not change the exit status.
)"},
};
