#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/inspected_file.h"
#include "commands/print.h"
#include "journal/backup_place.h"
#include "plant_file.h"
#include "record/dates.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"
#include "terminal/progress.h"
#include "terminal/prompt.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace
{

struct RestoreArguments
{
    std::string Chosen; // a backup, a date, or empty
    std::optional<std::string> From;
    bool Confirmed = false;
};

// Why the file cannot be restored; empty if it is a good backup.
std::string WhyNotGood(const std::string& path)
{
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(path, file); !result)
        return result.Error;
    if (file.Kind != PlantFileKind::Current && file.Kind != PlantFileKind::Older)
        return path + ": " + KindInWords(file.Kind);
    std::vector<PlantFileFinding> findings;
    const PlantFileResult checked = CheckPlantDatabase(path, findings);
    const auto isDamage = [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::Damage; };
    const auto damage = std::find_if(findings.begin(), findings.end(), isDamage);
    return damage != findings.end() ? path + ": " + damage->Description : checked.Error;
}

// The newest good backup of a day or before; of any day where `until` is empty. A month or a year stands for its last
// day.
std::string NewestGoodBackUp(const std::string& journal, const std::string& directory, const std::string& until)
{
    std::vector<PlantBackUpFile> files;
    if (const PlantFileResult result = ListPlantBackUps(journal, directory, files); !result)
        throw Refusal(result.Error + "; name a backup");
    for (const PlantBackUpFile& file : files)
    {
        if (file.Time.substr(0, until.size()) > until)
            continue;
        const std::string reason = WhyNotGood(file.Path);
        if (reason.empty())
            return file.Path;
        std::cerr << "notice: " << Printable(reason) << "; an older backup is used\n";
    }
    throw Refusal(directory + ": no good backup" + (until.empty() ? "" : " of " + until + " or before") +
                  "; `plantjournal backup --list` lists the backups; name one");
}

std::string ChosenBackUp(const std::string& journal, const RestoreArguments& arguments)
{
    std::error_code ignored;
    std::string until;
    if (!arguments.Chosen.empty())
    {
        if (std::filesystem::exists(plant_file::PathOfText(arguments.Chosen), ignored))
            return arguments.Chosen;
        try
        {
            until = DateFrom(arguments.Chosen);
        }
        catch (const BadValue&)
        {
            throw Refusal(arguments.Chosen + ": no such backup, and not a date; `plantjournal backup --list` lists the "
                                             "backups");
        }
    }
    return NewestGoodBackUp(journal, BackUpDirectory(journal, arguments.From.value_or("")), until);
}

// The tables of the journal that is there and of the backup.
class Comparison
{
  public:
    // The files may be missing, or damaged so that nothing can be read.
    Comparison(const std::string& journal, const std::string& backUp)
    {
        Read(journal, Now);
        Read(backUp, Then);
    }

    void Print(std::ostream& out) const
    {
        std::vector<Row> rows;
        for (const PlantFileTable& table : Then.Tables)
            if (const std::string label = TableLabel(table.Name); !label.empty())
                rows.push_back({label, NowIn(table.Name), std::to_string(table.Rows), Change(table)});
        const bool isRead = !Now.Tables.empty();
        rows.push_back({"Last date", isRead ? Now.LastDate : "", Then.LastDate, ""});
        if (!isRead)
            out << "The present file: " << KindInWords(Now.Kind) << '\n';
        PrintTable(out,
                   {{"Records", WhenNarrow::Keep},
                    {"Now", WhenNarrow::Keep, true},
                    {"Backup", WhenNarrow::Keep, true},
                    {"Change", WhenNarrow::Keep, true}},
                   rows);
    }

    JSON AsJSON() const
    {
        JSON object = JSON::Object();
        for (const PlantFileTable& table : Then.Tables)
        {
            JSON counts = JSON::Object();
            const PlantFileTable* const now = TableNow(table.Name);
            counts.Add("Now", now != nullptr ? JSONOf(now->Rows) : JSON::Null());
            counts.Add("BackUp", JSONOf(table.Rows));
            object.Add(table.Name, std::move(counts));
        }
        return object;
    }

  private:
    static void Read(const std::string& path, PlantFileInspection& file)
    {
        if (!InspectPlantDatabase(path, file))
            file.Kind = PlantFileKind::Damaged; // the restoration has the reason
    }

    const PlantFileTable* TableNow(const std::string& name) const
    {
        const auto table = std::find_if(Now.Tables.begin(), Now.Tables.end(),
                                        [&](const PlantFileTable& other) { return other.Name == name; });
        return table != Now.Tables.end() ? &*table : nullptr;
    }

    std::string NowIn(const std::string& name) const
    {
        const PlantFileTable* const table = TableNow(name);
        return table != nullptr ? std::to_string(table->Rows) : "";
    }

    std::string Change(const PlantFileTable& backUp) const
    {
        const PlantFileTable* const now = TableNow(backUp.Name);
        if (now == nullptr || now->Rows == backUp.Rows)
            return "";
        const std::string change = std::to_string(backUp.Rows - now->Rows);
        return backUp.Rows > now->Rows ? '+' + change : change;
    }

    PlantFileInspection Now;
    PlantFileInspection Then;
};

void Ask(const Comparison& comparison, const std::string& journal, const std::string& backUp)
{
    comparison.Print(std::cerr);
    if (!Confirm("Restore " + Printable(journal) + " from " + Printable(backUp) + '?', "--yes"))
        throw Refusal("nothing was restored; answer y, or pass --yes");
}

PlantRestoration RestoreWithProgress(const std::string& journal, const std::string& backUp)
{
    Progress bar("Restoring");
    PlantRestoration restoration;
    const PlantFileResult result = RestorePlantDatabase(backUp, journal, restoration, ShownOn(bar));
    if (result)
        return restoration;
    const bool isLocked = result.Error.ends_with("database is locked");
    throw Refusal(Joined({result.Error,
                          restoration.KeptPath.empty() ? "" : "the former journal is also in " + restoration.KeptPath,
                          Interrupted() ? "run the command again"
                          : isLocked    ? "try again when the other program has finished"
                                        : "check the paths, the permissions and the free space of the disk, or name "
                                          "another backup"},
                         "; "));
}

void PrintRestored(const Session& session, const std::string& journal, const std::string& backUp,
                   const PlantRestoration& restoration, const Comparison& comparison)
{
    if (restoration.MustReopen)
        std::cerr << "notice: " << Printable(journal) << ": programs that have it open must open it again\n";
    if (session.AsJSON)
    {
        JSON object = JSON::Object();
        object.Add("File", JSONOf(journal));
        object.Add("BackUp", JSONOf(backUp));
        object.Add("FormerFile", restoration.KeptPath.empty() ? JSON::Null() : JSONOf(restoration.KeptPath));
        object.Add("Tables", comparison.AsJSON());
        return PrintJSON(object);
    }
    if (session.Quiet)
        return;
    std::cout << Printable("Restored " + journal + " from " + backUp) << '\n';
    if (!restoration.KeptPath.empty())
        std::cout << Printable("The former journal is " + restoration.KeptPath) << '\n';
}

void Restore(const Session& session, const RestoreArguments& arguments)
{
    const std::string journal = session.Path();
    const std::string backUp = ChosenBackUp(journal, arguments);
    if (const std::string reason = WhyNotGood(backUp); !reason.empty())
        throw Refusal(reason + "; nothing was changed; `plantjournal backup --list` lists the backups");
    const Comparison comparison(journal, backUp);
    if (!arguments.Confirmed)
        Ask(comparison, journal, backUp);
    const PlantRestoration restoration = RestoreWithProgress(journal, backUp);
    if (arguments.Confirmed && !session.Quiet && !session.AsJSON)
        comparison.Print(std::cout);
    PrintRestored(session, journal, backUp, restoration, comparison);
}

} // namespace

void AddRestoreCommand(CLI::App& program, Session& session)
{
    auto wanted = std::make_shared<RestoreArguments>();
    CLI::App& command =
        AddCommand(program, "restore",
                   "Put a backup in the place of the journal, and keep a copy of the present journal, even if it is "
                   "damaged",
                   "restore\nrestore yesterday\nrestore /media/stick/journal.db --yes",
                   [&session, wanted] { Restore(session, *wanted); });
    AddArgument(command, "BACKUP",
                "the backup file, or a date for the newest good backup of that day or before; a file whose name is a "
                "date is the backup file; without BACKUP, the newest good backup",
                wanted->Chosen, Need::Optional);
    AddFlag(command, {"--from", "find the dated backups below DIR, as `backup --to DIR` keeps them", "DIR"},
            wanted->From);
    AddSwitch(command, "-y,--yes", "restore without asking", wanted->Confirmed);
}
