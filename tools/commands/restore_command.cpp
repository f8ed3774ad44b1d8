#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/inspected_file.h"
#include "commands/print.h"
#include "journal/backup_place.h"
#include "journal/file_result.h"
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
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace
{

struct RestoreArguments
{
    std::string Chosen; // a backup, a date, or empty
    std::optional<std::string> From;
    bool Confirmed = false;
};

bool IsJournal(const PlantFileInspection& file)
{
    return file.Kind == PlantFileKind::Current || file.Kind == PlantFileKind::Older;
}

// The damage that SQLite finds in a journal whose rows can be read; empty where there is none.
std::string DamageIn(const std::string& path)
{
    std::vector<PlantFileFinding> findings;
    const PlantFileResult checked = CheckPlantDatabase(path, findings);
    const auto isDamage = [](const PlantFileFinding& finding) { return finding.Kind == PlantFindingKind::Damage; };
    const auto damage = std::find_if(findings.begin(), findings.end(), isDamage);
    return damage != findings.end() ? path + ": " + damage->Description : checked.Error;
}

// Why the file cannot be restored; empty if it is a good backup.
std::string WhyNotGood(const std::string& path)
{
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(path, file); !result)
        return result.Error;
    if (file.Kind == PlantFileKind::Interrupted)
        return path + ": " + KindInWords(file.Kind) + ", which `plantjournal plant list --file " + path +
               "` rolls back";
    if (!IsJournal(file))
        return path + ": " + KindInWords(file.Kind);
    return DamageIn(path);
}

// Where the backups of other journals with the name of this one are. A journal that was moved left its backups there.
std::string OthersOfThisName(const std::filesystem::path& directory)
{
    std::string found;
    std::error_code ignored;
    const std::string own = plant_file::TextOfPath(directory.filename());
    const std::string name = own.substr(0, own.rfind('-') + 1);
    for (const auto& entry : std::filesystem::directory_iterator(directory.parent_path(), ignored))
    {
        const std::string other = plant_file::TextOfPath(entry.path().filename());
        if (other.size() == own.size() && other.starts_with(name) && other != own)
            found += (found.empty() ? "; backups of other journals with its name are in " : ", ") +
                     plant_file::TextOfPath(entry.path());
    }
    return found;
}

// The newest good backup of a day or before. Where `until` is empty, none of the future: a wrong clock can have made
// it. A month or a year stands for its last day.
std::string NewestGoodBackUp(const std::string& journal, const std::string& directory, const std::string& until)
{
    std::vector<PlantBackUpFile> files;
    if (const PlantFileResult result = ListPlantBackUps(journal, directory, files); !result)
        throw Refusal(result.Error + "; name a backup");
    if (files.empty())
        throw Refusal(directory + ": no backup of this journal" + OthersOfThisName(directory) +
                      "; name a backup, or read what is left of a damaged journal with `plantjournal salvage`");
    for (const PlantBackUpFile& file : files)
    {
        if (until.empty() && IsOfTheFuture(file))
            std::cerr << "notice: " << Printable(file.Path)
                      << ": its date is in the future, so it is not used; name it to restore it\n";
        if (until.empty() ? IsOfTheFuture(file) : file.Time.substr(0, until.size()) > until)
            continue;
        const std::string reason = WhyNotGood(file.Path);
        if (reason.empty())
            return file.Path;
        std::cerr << "notice: " << Printable(reason) << "; it is not used\n";
    }
    throw Refusal(directory + ": no good backup of " + (until.empty() ? PlantEventCurrentDate() : until) +
                  " or before; `plantjournal backup --list` lists the backups; name one");
}

std::string ChosenBackUp(const std::string& journal, const RestoreArguments& arguments)
{
    std::error_code ignored;
    std::string until;
    if (!arguments.Chosen.empty())
    {
        const std::filesystem::path file = plant_file::PathOfText(arguments.Chosen);
        if (std::filesystem::is_regular_file(file, ignored))
            return arguments.Chosen;
        try
        {
            until = DateFrom(arguments.Chosen);
        }
        catch (const BadValue&)
        {
            if (std::filesystem::exists(file, ignored))
                return arguments.Chosen;
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
        if (IsJournal(Now) && !DamageIn(journal).empty())
            Now.Kind = PlantFileKind::Damaged;
    }

    void Print(std::ostream& out) const
    {
        std::vector<Row> rows;
        for (const std::string& table : TableNames())
            if (const std::string label = TableLabel(table); !label.empty())
                rows.push_back({label, TextOf(RowsIn(Now, table)), TextOf(RowsIn(Then, table)), Change(table)});
        const bool isRead = !Now.Tables.empty();
        rows.push_back({"Last date", isRead ? Now.LastDate : "", Then.LastDate, ""});
        if (!IsJournal(Now))
            out << "The present file: " << KindInWords(Now.Kind)
                << (isRead || Now.Bytes == 0 ? "" : "; its records are not counted") << '\n';
        PrintTable(out,
                   {{"Records", WhenNarrow::Keep},
                    {"Now", WhenNarrow::Keep, true},
                    {"Backup", WhenNarrow::Keep, true},
                    {"Change", WhenNarrow::Keep, true}},
                   rows);
    }

    bool ReplacesTheFile() const
    {
        return Now.Kind == PlantFileKind::Damaged || Now.Kind == PlantFileKind::NotADatabase;
    }

    JSON AsJSON() const
    {
        JSON object = JSON::Object();
        for (const std::string& table : TableNames())
        {
            const std::optional<std::int64_t> now = RowsIn(Now, table);
            JSON counts = JSON::Object();
            counts.Add("Now", now ? JSONOf(*now) : JSON::Null());
            counts.Add("BackUp", JSONOf(*RowsIn(Then, table)));
            object.Add(table, std::move(counts));
        }
        return object;
    }

    JSON LastDates() const
    {
        JSON dates = JSON::Object();
        dates.Add("Now", Now.Tables.empty() ? JSON::Null() : JSONOf(Now.LastDate));
        dates.Add("BackUp", JSONOf(Then.LastDate));
        return dates;
    }

  private:
    static void Read(const std::string& path, PlantFileInspection& file)
    {
        if (!InspectPlantDatabase(path, file))
            file.Kind = PlantFileKind::Damaged; // the restoration has the reason
    }

    // The tables of either file.
    std::vector<std::string> TableNames() const
    {
        std::vector<std::string> names;
        for (const PlantFileInspection* const file : {&Then, &Now})
            for (const PlantFileTable& table : file->Tables)
                if (std::find(names.begin(), names.end(), table.Name) == names.end())
                    names.push_back(table.Name);
        return names;
    }

    // Nothing where the file could not be read. Earlier schemas lack some of the tables.
    static std::optional<std::int64_t> RowsIn(const PlantFileInspection& file, const std::string& table)
    {
        if (file.Tables.empty())
            return {};
        const auto found = std::find_if(file.Tables.begin(), file.Tables.end(),
                                        [&](const PlantFileTable& other) { return other.Name == table; });
        return found != file.Tables.end() ? found->Rows : 0;
    }

    static std::string TextOf(const std::optional<std::int64_t>& rows) { return rows ? std::to_string(*rows) : ""; }

    std::string Change(const std::string& table) const
    {
        const std::optional<std::int64_t> now = RowsIn(Now, table);
        const std::int64_t then = *RowsIn(Then, table);
        if (!now || *now == then)
            return "";
        return (then > *now ? "+" : "") + std::to_string(then - *now);
    }

    PlantFileInspection Now;
    PlantFileInspection Then;
};

void Ask(const Comparison& comparison, const std::string& journal, const std::string& backUp)
{
    comparison.Print(std::cerr);
    if (comparison.ReplacesTheFile())
        std::cerr << "Close the programs that have it open first, or their changes are lost.\n";
    if (!Confirm("Restore " + Printable(journal) + " from " + Printable(backUp) + '?', "--yes"))
        throw Refusal("nothing was restored; answer y, or pass --yes");
}

// What to do about a refused restoration.
std::string AdviceAfter(const std::string& error, const std::string& journal, const std::string& backUp)
{
    if (Interrupted() || error == backUp + ": no such file") // it was removed since the question
        return "run the command again";
    if (error.ends_with("database is locked"))
        return "try again when the other program has finished";
    if (error.ends_with("remove it first"))
        return "then run the command again";
    if (error.ends_with("are the same file"))
        return "name another backup, or another journal with --file";
    if (error.ends_with("a symbolic link to a file that does not exist"))
        return AdviceForBrokenLink;
    PlantFileInspection file;
    const bool isRead = static_cast<bool>(InspectPlantSchema(journal, file));
    return isRead && file.Kind == PlantFileKind::Foreign
               ? AdviceForForeign
               : "check the paths, the permissions and the free space of the disk";
}

PlantRestoration RestoreWithProgress(const std::string& journal, const std::string& backUp)
{
    Progress bar("Restoring");
    PlantRestoration restoration;
    const PlantFileResult result = RestorePlantDatabase(backUp, journal, restoration, ShownOn(bar));
    if (result)
        return restoration;
    std::string error = result.Error;
    if (error.ends_with('.')) // a sentence about the schema or the damage
        error.pop_back();
    throw Refusal(
        Joined({error, restoration.KeptPath.empty() ? "" : "the former journal is also in " + restoration.KeptPath,
                AdviceAfter(error, journal, backUp)},
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
        object.Add("LastDate", comparison.LastDates());
        object.Add("OpenPrograms", JSONOf(std::string(restoration.MustReopen ? "MustReopen" : "CanContinue")));
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
                "date is the backup file; without BACKUP, the newest good backup up to today",
                wanted->Chosen, Need::Optional);
    AddFlag(command,
            {"--from", "find the dated backups below DIR, as `backup --to DIR` keeps them", "DIR", Need::Optional,
             PathObjection},
            wanted->From);
    AddSwitch(command, "-y,--yes", "restore without asking", wanted->Confirmed);
}
