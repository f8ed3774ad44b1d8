/// @file greenhouse_season.cpp
/// A first program with plantjournal: keeps a season of cherry tomatoes, measured in six greenhouse compartments, in a
/// journal, opens that journal again and shows it.

#include "measurements.h"
#include "plant.h"
#include "plant_database.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace
{

// ---------------------------------------------------------------------------------------------------------------------
// Keeping the season

/// The writing takes some seconds: tells on a terminal how far it has come, and wipes the line in the end.
class Progress
{
  public:
    explicit Progress(std::size_t total) : Total(total) {}
    ~Progress() { Rewrite(""); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Step() { Rewrite("Keeping the season: " + std::to_string(++Done) + " of " + std::to_string(Total)); }

  private:
    void Rewrite(const std::string& text)
    {
        if (IsTerminal)
            std::cerr << '\r' << std::string(Width, ' ') << '\r' << text << std::flush;
        Width = text.size();
    }

#ifdef _WIN32
    bool IsTerminal = _isatty(2) != 0;
#else
    bool IsTerminal = isatty(STDERR_FILENO) != 0;
#endif
    std::size_t Total;
    std::size_t Done = 0;
    std::size_t Width = 0;
};

/// The library answers every operation with `true` or `false`, and no answer may be missed.
void RequireWritten(bool answer, const std::string& record)
{
    Require(answer, record + " cannot be written: is the disk full, or the journal write-protected or in use?");
}

/// Keeps what hangs off `plant`. All of it refers to the plant by its UUID.
void KeepRecords(PlantRepository& repository, Plant& plant, const Compartment& measured, Progress& progress)
{
    for (PlantEvent event : measured.Events)
    {
        event.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantEvent(event), "The picking of " + event.EventDate);
        progress.Step();
    }
    for (PlantCareEntry entry : measured.Care) // each appears on the timeline, too
    {
        entry.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantCareEntry(entry), "The care of " + entry.CareDate);
        progress.Step();
    }
    for (PlantJournalEntry entry : measured.Journal)
    {
        entry.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantJournalEntry(entry), "The entry of " + entry.EntryDate);
        progress.Step();
    }
    HarvestRecord harvest = measured.Harvest; // gives the plant its harvest date, too
    RequireWritten(repository.SaveHarvestRecord(plant, harvest), "The harvest of " + plant.Name);
}

/// The season's plants in the journal, and none of the grower's others.
std::vector<Plant> FindSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Plant> plants;
    Require(repository.ListPlants(plants), "The journal's plants cannot be listed.");
    const auto isOther = [&](const Plant& plant)
    {
        const auto isOf = [&](const Compartment& measured)
        {
            const Plant& subject = measured.Subject;
            return subject.Name == plant.Name && subject.Strain == plant.Strain && subject.Tent == plant.Tent;
        };
        return std::none_of(season.begin(), season.end(), isOf);
    };
    plants.erase(std::remove_if(plants.begin(), plants.end(), isOther), plants.end());
    return plants;
}

/// Keeps of the season what the journal does not have yet; when a write fails, nothing of that. The harvest is written
/// last: a plant without its date is what an interrupted run has left, and is kept anew.
void KeepSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Compartment> missing = season;
    for (const Plant& plant : FindSeason(repository, season))
    {
        const auto isOf = [&](const Compartment& measured) { return measured.Subject.Name == plant.Name; };
        if (plant.HarvestDate.empty())
            RequireWritten(repository.DeletePlant(plant.UUID), "The removal of a half-kept plant");
        else
            missing.erase(std::remove_if(missing.begin(), missing.end(), isOf), missing.end());
    }
    if (missing.empty())
    {
        std::cout << "The journal has the season already; nothing was written.\n";
        return;
    }

    std::size_t total = 0;
    for (const Compartment& measured : missing)
        total += measured.Events.size() + measured.Care.size() + measured.Journal.size();
    Progress progress(total);
    std::vector<Plant> written;
    try
    {
        for (const Compartment& measured : missing)
        {
            Plant plant = measured.Subject;
            RequireWritten(repository.CreatePlant(plant), "The plant " + plant.Name); // its UUID is written back
            written.push_back(plant);
            KeepRecords(repository, plant, measured, progress);
        }
    }
    catch (const Problem&)
    {
        for (const Plant& plant : written) // with all that hangs off it
            RequireWritten(repository.DeletePlant(plant.UUID), "The removal of what was written before");
        throw;
    }
    std::cout << "The season was written to the journal.\n";
}

// ---------------------------------------------------------------------------------------------------------------------
// Showing the journal

/// The season as the journal has it.
std::vector<Compartment> ReadSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Compartment> found;
    for (const Plant& plant : FindSeason(repository, season))
    {
        Compartment& kept = found.emplace_back();
        kept.Subject = plant;
        Require(repository.ListPlantEvents(plant.UUID, kept.Events) &&
                    repository.ListPlantCareEntries(plant.UUID, kept.Care) &&
                    repository.ListPlantJournalEntries(plant.UUID, kept.Journal),
                "The records of " + plant.Name + " cannot be listed.");
        repository.GetHarvestRecord(plant.UUID, kept.Harvest); // false tells that the plant has none
    }
    return found;
}

std::string Fixed(double number, int decimals, const std::string& unit = "")
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number << unit;
    return text.str();
}

/// Cuts a long text at a blank, so that a line of the timeline fits on 80 columns.
std::string Shortened(const std::string& text)
{
    constexpr std::size_t length = 57;
    return text.size() <= length ? text : text.substr(0, text.rfind(' ', length - 4)) + " ...";
}

/// Prints rows, the heading first, with an `l` or `r` in `alignment` for each column.
void PrintTable(const std::string& title, const std::string& alignment,
                const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths(alignment.size(), 0);
    for (const std::vector<std::string>& row : rows)
    {
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    }
    std::cout << '\n' << title << '\n';
    for (const std::vector<std::string>& row : rows)
    {
        std::string line;
        for (std::size_t column = 0; column < widths.size(); ++column)
        {
            const std::string padding(widths[column] - row[column].size(), ' ');
            line += "  " + (alignment[column] == 'l' ? row[column] + padding : padding + row[column]);
        }
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    }
}

std::string WithThousands(std::size_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, ",");
    return text;
}

void ShowCounts(const std::vector<Compartment>& season)
{
    std::size_t feeds = 0;
    std::size_t waters = 0;
    std::size_t events = 0;
    std::size_t entries = 0;
    std::size_t harvests = 0;
    for (const Compartment& kept : season)
    {
        for (const PlantCareEntry& entry : kept.Care)
            ++(entry.Action == PlantCareAction::Feed ? feeds : waters);
        events += kept.Events.size();
        entries += kept.Journal.size();
        harvests += kept.Harvest.ID != 0 ? 1 : 0;
    }
    std::cout << '\n'
              << WithThousands(season.size()) << " plants, " << WithThousands(feeds + waters) << " care entries ("
              << WithThousands(feeds) << " Feed, " << WithThousands(waters) << " Water), " << WithThousands(events)
              << " timeline events, " << WithThousands(entries) << " journal entries, " << WithThousands(harvests)
              << " harvests\n";
}

void ShowPlants(const std::vector<Compartment>& season)
{
    std::vector<std::vector<std::string>> rows = {
        {"Name", "Stage", "Transplanted", "Harvested", "Care", "Dry weight", "Quality"}};
    for (const Compartment& kept : season)
    {
        rows.push_back({kept.Subject.Name, PlantStageName(kept.Subject.Stage), kept.Subject.TransplantDate,
                        kept.Subject.HarvestDate, std::to_string(kept.Care.size()),
                        Fixed(kept.Harvest.DryWeightG, 1, " g"), Fixed(kept.Harvest.QualityRating, 2)});
    }
    PrintTable("Plants", "llllrrr", rows);
}

void ShowPlant(const Compartment& kept)
{
    constexpr std::size_t careShown = 5;
    constexpr std::size_t eventsShown = 8;

    std::vector<std::vector<std::string>> rows = {{"Date", "Care", "Product", "Amount", "EC", "pH", "Run-off"}};
    for (std::size_t i = 0; i < std::min(careShown, kept.Care.size()); ++i)
    {
        const PlantCareEntry& entry = kept.Care[i];
        rows.push_back({entry.CareDate, PlantCareActionName(entry.Action), entry.Product,
                        Fixed(entry.AmountMl, 0, " ml"), Fixed(entry.EC, 2), Fixed(entry.PH, 2),
                        Fixed(entry.RunoffMl, 0, " ml")});
    }
    PrintTable("Newest care of " + kept.Subject.Name, "lllrrrr", rows);

    rows = {{"Date", "Event", "Details"}};
    for (std::size_t i = 0; i < std::min(eventsShown, kept.Events.size()); ++i)
    {
        const PlantEvent& event = kept.Events[i];
        rows.push_back({event.EventDate, PlantEventTypeName(event.Type), Shortened(event.Details)});
    }
    PrintTable("Newest on the timeline of " + kept.Subject.Name, "lll", rows);

    const HarvestRecord& harvest = kept.Harvest;
    if (harvest.HarvestDate.empty())
        return;
    PrintTable("Harvest of " + kept.Subject.Name, "lrrr",
               {{"Date", "Wet weight", "Dry weight", "Quality"},
                {harvest.HarvestDate, Fixed(harvest.WetWeightG, 1, " g"), Fixed(harvest.DryWeightG, 1, " g"),
                 Fixed(harvest.QualityRating, 2)}});
}

/// Shows what the strain's plants have come to, with those that the grower has besides.
void ShowStrain(PlantRepository& repository, const std::string& name)
{
    std::vector<Strain> strains;
    Require(repository.ListStrains(strains), "The strains cannot be listed.");
    for (const Strain& strain : strains)
    {
        StrainSummary summary;
        if (strain.Name != name)
            continue;
        Require(repository.GetStrainSummary(strain.ID, summary), "The strain cannot be summed up.");
        PrintTable("Strain " + summary.StrainName, "rrrrr",
                   {{"Plants", "Harvested", "Harvests", "Mean dry weight", "Mean quality"},
                    {std::to_string(summary.TotalPlants), std::to_string(summary.Harvested),
                     std::to_string(summary.HarvestCount), Fixed(summary.AverageDryWeightG, 2, " g"),
                     Fixed(summary.AverageQuality, 2)}});
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// The program

void Open(PlantDatabase& journal, const std::string& path)
{
    std::string reason;
    if (!journal.Open(path, &reason))
        throw Problem(path + ": cannot be opened: " + reason);
}

void KeepAndShow(const std::string& path, const std::string& dataDirectory)
{
    const std::vector<Compartment> season = ReadMeasurements(dataDirectory); // all is checked before any is kept

    PlantDatabase journal;
    PlantRepository repository(journal);
    Open(journal, path);
    std::cout << "Journal " << path << '\n';
    KeepSeason(repository, season);
    journal.Close();

    Open(journal, path);
    const std::vector<Compartment> kept = ReadSeason(repository, season);
    ShowPlants(kept);
    for (const Compartment& compartment : kept)
        if (compartment.Subject.Name == "Reference")
            ShowPlant(compartment);
    ShowStrain(repository, season.front().Subject.Strain);
    ShowCounts(kept);
    Require(static_cast<bool>(std::cout.flush()), "The output cannot be written.");
}

} // namespace

int main(int argc, char** argv)
{
    const std::string usage = "Usage: greenhouse_season [JOURNAL [DATA-DIRECTORY]]\n"
                              "Keeps a greenhouse season in the journal file JOURNAL (season.db) and shows it.\n";
    try
    {
        const std::vector<std::string> arguments(argv, std::next(argv, argc));
        if (arguments.size() == 2 && arguments[1] == "--help")
        {
            std::cout << usage;
            return 0;
        }
        const bool hasOption = std::any_of(arguments.begin() + 1, arguments.end(),
                                           [](const std::string& argument) { return argument.rfind('-', 0) == 0; });
        if (hasOption || arguments.size() > 3)
        {
            std::cerr << usage;
            return 2;
        }
        KeepAndShow(arguments.size() > 1 ? arguments[1] : "season.db",
                    arguments.size() > 2 ? arguments[2] : GREENHOUSE_DATA_DIR);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
