#include "query/random_journal.h"

#include "testing/plain_connection.h"

#include <initializer_list>

namespace support
{

namespace
{

// Writes random values as SQL.
class RandomRows
{
  public:
    RandomRows(sqlite3* journal, std::mt19937_64& random) : Journal(journal), Random(random) {}

    void Fill()
    {
        RunSQL(Journal, "PRAGMA foreign_keys=OFF; PRAGMA ignore_check_constraints=ON; BEGIN;");
        for (const char* table : {"PlantJournalEntries", "PlantHealthObservations", "PlantPhotos", "HarvestRecords",
                                  "PlantCareEntries", "PlantEvents", "Plants", "Strains"})
            RunSQL(Journal, std::string("DELETE FROM ") + table + ';');
        InsertPlants();
        InsertSome(12, "PlantEvents(ID,PlantUUID,EventDate,EventType,Details)",
                   [&] { return ID(40) + ',' + UUID() + ',' + Date() + ',' + EventType() + ',' + Text(); });
        InsertSome(12,
                   "PlantCareEntries(TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes)",
                   [&]
                   {
                       return Event() + ',' + UUID() + ',' + Date() + ',' + OneOf({"'Feed'", "'Water'", "'Rain'"}) +
                              ',' + Text() + ',' + Number() + ',' + Number() + ',' + Number() + ',' + Number() + ',' +
                              Text();
                   });
        InsertSome(6,
                   "HarvestRecords(TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
                   "CureOutcome,Notes)",
                   [&]
                   {
                       return Event() + ',' + UUID() + ',' + Date() + ',' + Number() + ',' + Number() + ',' + Number() +
                              ',' + OneOf({"0", "12", "-1"}) + ',' + Text() + ',' + Text();
                   });
        InsertSome(5, "PlantPhotos(UUID,PlantUUID,PhotoDate,FilePath,Caption)",
                   [&] { return "hex(randomblob(8))," + UUID() + ',' + Date() + ',' + Text() + ',' + Text(); });
        InsertSome(5, "PlantHealthObservations(PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes)",
                   [&]
                   {
                       return UUID() + ',' + Date() + ',' + OneOf({"'Mites'", "'mites'", "'MITES'", "''", "'Mildew'"}) +
                              ',' + OneOf({"1", "3", "5", "9"}) + ',' + Text() + ',' + Text();
                   });
        InsertSome(5, "PlantJournalEntries(PlantUUID,EntryDate,Type,Details)",
                   [&]
                   {
                       return UUID() + ',' + Date() + ',' +
                              OneOf({"'Observation'", "'Training'", "'Pruning'", "'Milestone'", "'Poem'"}) + ',' +
                              Text();
                   });
        RunSQL(Journal, "COMMIT; PRAGMA foreign_keys=ON; PRAGMA ignore_check_constraints=OFF;");
    }

  private:
    void InsertPlants()
    {
        for (const std::string& uuid : RandomUUIDs())
            if (uuid != RandomUUIDs().back() && Random() % 8 != 0)
                Insert("Plants(ID,UUID,Name,Strain,MotherPlantID,Stage,Tent,SeedDate,CloneDate,TransplantDate,FlipDate,"
                       "HarvestDate)",
                       ID(1000) + ",'" + uuid + "'" + (uuid == "zero" ? "||char(0)||'x'" : "") + ',' + Name() + ',' +
                           Name() + ",(SELECT ID FROM Plants ORDER BY random() LIMIT 1)," + Stage() + ',' + Name() +
                           ',' + Date() + ',' + Date() + ',' + Date() + ',' + Date() + ',' + Date());
        RunSQL(Journal, "UPDATE Plants SET MotherPlantID=NULL WHERE random()%4=0;");
        if (Random() % 4 == 0)
            RunSQL(Journal, "UPDATE Plants SET MotherPlantID=(SELECT MAX(ID) FROM Plants) WHERE random()%2=0;");
    }

    template <typename Values> void InsertSome(std::size_t atMost, const std::string& columns, const Values& values)
    {
        for (std::size_t i = static_cast<std::size_t>(Random() % (atMost + 1)); i > 0; --i)
            Insert(columns, values());
    }

    void Insert(const std::string& columns, const std::string& values)
    {
        RunSQL(Journal, "INSERT OR IGNORE INTO " + columns + " VALUES(" + values + ");");
    }

    std::string OneOf(std::initializer_list<const char*> values)
    {
        return *(values.begin() + static_cast<std::size_t>(Random() % values.size()));
    }
    std::string OneOf(const std::vector<std::string>& values)
    {
        return '\'' + values.at(static_cast<std::size_t>(Random() % values.size())) + '\'';
    }

    std::string ID(std::size_t most) { return std::to_string(1 + Random() % most); }
    std::string UUID() { return OneOf(RandomUUIDs()); }
    std::string Name() { return OneOf(RandomNames()); }
    std::string Date() { return OneOf(RandomDates()) + (Random() % 16 == 0 ? "||char(0)||'x'" : ""); }
    std::string Event() { return Random() % 3 == 0 ? "NULL" : ID(40); }
    std::string Number() { return OneOf({"0", "0", "1.25", "2.5", "6.1", "500", "1e300", "-1", "9e999"}); }
    std::string Text()
    {
        return OneOf({"''", "''", "'Bloom A'", "'bloom b'", "'ÄPFEL'", "'a'||char(0)||'b'", "'Flip | x'", "'Veg'",
                      "'Flower'", "'100 %'"});
    }
    std::string Stage()
    {
        return OneOf(
            {"'Seed'", "'Clone'", "'Veg'", "'Flower'", "'Dry'", "'Cure'", "'Harvested'", "'Archived'", "'Moon'"});
    }
    std::string EventType()
    {
        return OneOf({"'Clone'", "'Transplant'", "'Flip'", "'Harvest'", "'Feed'", "'Water'", "'Stage'", "'Topped'",
                      "'LST Trained'", "'Note'", "'Storm'"});
    }

    sqlite3* Journal;
    std::mt19937_64& Random;
};

} // namespace

const std::vector<std::string>& RandomDates()
{
    static const std::vector<std::string> dates = {
        "",           "2025-02-28",       "2025-03-01",      "2025-03-02",  "2025-03-03", "2025-03-09",
        "2025-04-01", "2025-02-30",       "2025-03",         "2025",        "zz",         "2999-01-01",
        "2024-12-30", "2025-03-02 08:00", "2025-03-02\xFF!", "2025-03-02é", "\xFF"}; // texts of other programs, one of
                                                                                     // them no UTF-8
    return dates;
}

const std::vector<std::string>& RandomNames()
{
    static const std::vector<std::string> names = {"", "Basil", "basil", "Mint", "Äpfel"};
    return names;
}

const std::vector<std::string>& RandomUUIDs()
{
    static const std::vector<std::string> uuids = {"one", "two", "three", "four", "five", "zero", "unknown"};
    return uuids;
}

void FillAtRandom(sqlite3* journal, std::mt19937_64& random)
{
    RandomRows(journal, random).Fill();
}

} // namespace support
