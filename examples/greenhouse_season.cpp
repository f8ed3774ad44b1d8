/// @file greenhouse_season.cpp
/// Stores a season of cherry tomatoes, measured in six greenhouse compartments, in a journal. Then opens the journal
/// again and shows it.

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

namespace
{

// ---------------------------------------------------------------------------------------------------------------------
// Storing the season

/// Throws `Problem` unless `written` is true. Every write goes through here, so that no failure is missed.
void RequireWritten(bool written, const std::string& record)
{
    Require(written, record + " cannot be written: is the disk full, or the journal write-protected or in use?");
}

/// Stores the records of `plant`. Each refers to the plant by its UUID.
void StoreRecords(PlantRepository& repository, Plant& plant, const Compartment& measured)
{
    for (PlantEvent event : measured.Events)
    {
        event.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantEvent(event), "The picking of " + event.EventDate);
    }
    for (PlantCareEntry entry : measured.Care) // also writes a timeline event
    {
        entry.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantCareEntry(entry), "The care of " + entry.CareDate);
    }
    for (PlantJournalEntry entry : measured.Journal)
    {
        entry.PlantUUID = plant.UUID;
        RequireWritten(repository.CreatePlantJournalEntry(entry), "The entry of " + entry.EntryDate);
    }
    HarvestRecord harvest = measured.Harvest; // also sets the harvest date of the plant
    RequireWritten(repository.SaveHarvestRecord(plant, harvest), "The harvest of " + plant.Name);
}

/// Returns the plants of the season that are in the journal, without the grower's own plants.
std::vector<Plant> FindSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Plant> plants;
    Require(repository.ListPlants(plants), "The plants of the journal cannot be listed.");
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

/// Stores the plants of the season that the journal does not have yet. If a write fails, removes all that it has
/// written. The harvest is written last, so a plant without a harvest date is the rest of an interrupted run; it is
/// deleted and written again.
void StoreSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Compartment> missing = season;
    for (const Plant& plant : FindSeason(repository, season))
    {
        const auto isOf = [&](const Compartment& measured) { return measured.Subject.Name == plant.Name; };
        if (plant.HarvestDate.empty())
            RequireWritten(repository.DeletePlant(plant.UUID), "The removal of an incomplete plant");
        else
            missing.erase(std::remove_if(missing.begin(), missing.end(), isOf), missing.end());
    }
    if (missing.empty())
    {
        std::cout << "The journal already holds the season; nothing was written.\n";
        return;
    }

    std::vector<Plant> written;
    try
    {
        for (const Compartment& measured : missing)
        {
            Plant plant = measured.Subject;
            RequireWritten(repository.CreatePlant(plant), "The plant " + plant.Name); // writes back the UUID
            written.push_back(plant);
            StoreRecords(repository, plant, measured);
        }
    }
    catch (const Problem&)
    {
        for (const Plant& plant : written) // deletes their records, too
            RequireWritten(repository.DeletePlant(plant.UUID), "The removal of what was written before");
        throw;
    }
    std::cout << "The season was written to the journal.\n";
}

// ---------------------------------------------------------------------------------------------------------------------
// Showing the journal

/// Reads the season from the journal.
std::vector<Compartment> ReadSeason(PlantRepository& repository, const std::vector<Compartment>& season)
{
    std::vector<Compartment> found;
    for (const Plant& plant : FindSeason(repository, season))
    {
        Compartment& stored = found.emplace_back();
        stored.Subject = plant;
        Require(repository.ListPlantEvents(plant.UUID, stored.Events) &&
                    repository.ListPlantCareEntries(plant.UUID, stored.Care) &&
                    repository.ListPlantJournalEntries(plant.UUID, stored.Journal),
                "The records of " + plant.Name + " cannot be listed.");
        repository.GetHarvestRecord(plant.UUID, stored.Harvest); // false if the plant has no harvest record
    }
    return found;
}

std::string Fixed(double number, int decimals, const std::string& unit = "")
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number << unit;
    return text.str();
}

/// Cuts a long text at a space, so that a line of the timeline fits in 80 columns.
std::string Shortened(const std::string& text)
{
    constexpr std::size_t length = 57;
    return text.size() <= length ? text : text.substr(0, text.rfind(' ', length - 4)) + " ...";
}

/// Prints rows as a table; the first row is the heading. `alignment` has an `l` or `r` for each column.
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
    for (const Compartment& stored : season)
    {
        for (const PlantCareEntry& entry : stored.Care)
            ++(entry.Action == PlantCareAction::Feed ? feeds : waters);
        events += stored.Events.size();
        entries += stored.Journal.size();
        harvests += stored.Harvest.ID != 0 ? 1 : 0;
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
    for (const Compartment& stored : season)
    {
        rows.push_back({stored.Subject.Name, PlantStageName(stored.Subject.Stage), stored.Subject.TransplantDate,
                        stored.Subject.HarvestDate, std::to_string(stored.Care.size()),
                        Fixed(stored.Harvest.DryWeightG, 1, " g"), Fixed(stored.Harvest.QualityRating, 2)});
    }
    PrintTable("Plants", "llllrrr", rows);
}

void ShowPlant(const Compartment& stored)
{
    constexpr std::size_t careShown = 5;
    constexpr std::size_t eventsShown = 8;

    std::vector<std::vector<std::string>> rows = {{"Date", "Care", "Product", "Amount", "EC", "pH", "Runoff"}};
    for (std::size_t i = 0; i < std::min(careShown, stored.Care.size()); ++i)
    {
        const PlantCareEntry& entry = stored.Care[i];
        rows.push_back({entry.CareDate, PlantCareActionName(entry.Action), entry.Product,
                        Fixed(entry.AmountMl, 0, " ml"), Fixed(entry.EC, 2), Fixed(entry.PH, 2),
                        Fixed(entry.RunoffMl, 0, " ml")});
    }
    PrintTable("Newest care of " + stored.Subject.Name, "lllrrrr", rows);

    rows = {{"Date", "Event", "Details"}};
    for (std::size_t i = 0; i < std::min(eventsShown, stored.Events.size()); ++i)
    {
        const PlantEvent& event = stored.Events[i];
        rows.push_back({event.EventDate, PlantEventTypeName(event.Type), Shortened(event.Details)});
    }
    PrintTable("Newest on the timeline of " + stored.Subject.Name, "lll", rows);

    const HarvestRecord& harvest = stored.Harvest;
    if (harvest.HarvestDate.empty())
        return;
    PrintTable("Harvest of " + stored.Subject.Name, "lrrr",
               {{"Date", "Wet weight", "Dry weight", "Quality"},
                {harvest.HarvestDate, Fixed(harvest.WetWeightG, 1, " g"), Fixed(harvest.DryWeightG, 1, " g"),
                 Fixed(harvest.QualityRating, 2)}});
}

/// Shows the summary of a strain. It includes the grower's own plants of that strain.
void ShowStrain(PlantRepository& repository, const std::string& name)
{
    std::vector<Strain> strains;
    Require(repository.ListStrains(strains), "The strains cannot be listed.");
    for (const Strain& strain : strains)
    {
        StrainSummary summary;
        if (strain.Name != name)
            continue;
        Require(repository.GetStrainSummary(strain.ID, summary), "The summary of the strain cannot be read.");
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

void StoreAndShow(const std::string& path, const std::string& dataDirectory)
{
    const std::vector<Compartment> season =
        ReadMeasurements(dataDirectory); // checks everything before anything is written

    PlantDatabase journal;
    PlantRepository repository(journal);
    Open(journal, path);
    std::cout << "Journal " << path << '\n';
    StoreSeason(repository, season);
    journal.Close();

    Open(journal, path);
    const std::vector<Compartment> stored = ReadSeason(repository, season);
    ShowPlants(stored);
    for (const Compartment& compartment : stored)
        if (compartment.Subject.Name == "Reference")
            ShowPlant(compartment);
    ShowStrain(repository, season.front().Subject.Strain);
    ShowCounts(stored);
    Require(static_cast<bool>(std::cout.flush()), "The output cannot be written.");
}

} // namespace

int main(int argc, char** argv)
{
    const std::string usage =
        "Usage: greenhouse_season [JOURNAL [DATA-DIRECTORY]]\n"
        "Stores a greenhouse season in the journal file JOURNAL (default: season.db) and shows it.\n";
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
        StoreAndShow(arguments.size() > 1 ? arguments[1] : "season.db",
                     arguments.size() > 2 ? arguments[2] : GREENHOUSE_DATA_DIR);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
