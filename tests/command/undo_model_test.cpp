// Random commands of every kind that writes: `undo` gives the export from before, to the byte.

#include "command/transfer_fixture.h"
#include "support/test_form.h"

#include <iostream>
#include <map>
#include <random>

using namespace support;

namespace
{

class UndoModelTest : public TransferTest
{
  protected:
    UndoModelTest()
    {
        KeepEverything();
        Sound = false; // the photos of the random commands do not exist
    }

    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Random() % count); }
    std::string Number(std::size_t count) { return std::to_string(Below(count)); }
    std::string OneOf(const Words& words) { return words[Below(words.size())]; }
    std::string Text() { return OneOf({"", "green", "two\nlines", "紅", "\xFF", "'; --", "a\"b"}); }
    std::string Date() { return OneOf({"today", "2026-05-01", "2026-04", "2025"}); }
    std::string PlantUUID()
    {
        const JSON plants = Parsed({"plant", "list"});
        return plants.empty() ? "none" : plants[Below(plants.size())]["UUID"].get<std::string>();
    }
    std::string StrainName()
    {
        const JSON strains = Parsed({"strain", "list"});
        return strains.empty() ? "none" : strains[Below(strains.size())]["Name"].get<std::string>();
    }
    // The row ID of a record of the plant.
    std::string RowID(const std::string& family, const std::string& plant)
    {
        const ProgramResult list = Run({family, "list", plant, "--json"});
        const JSON records = list.Status == 0 ? JSON::parse(list.Out) : JSON::array();
        return records.empty() ? "1" : std::to_string(records[Below(records.size())]["ID"].get<std::int64_t>());
    }

    Words PlantCommand()
    {
        const std::string plant = PlantUUID();
        switch (PlantCommands++ % 6)
        {
        case 0:
            return {"plant",
                    "add",
                    "Plant " + Number(1000),
                    "--strain",
                    OneOf({"Genovese", "S" + Number(20)}),
                    "--seed-date",
                    Date(),
                    "--notes",
                    Text(),
                    "--mother",
                    plant};
        case 1:
            return {"plant", "edit", plant, "--tent", Text(), "--final-height-cm", Number(200)};
        case 2:
            return {"plant", "edit", plant, "--strain", "S" + Number(20), "--stage", OneOf({"veg", "flower", "dry"})};
        case 3:
            return {"plant", "edit", plant, "--name", "Plant " + Number(1000), "--notes", Text()};
        case 4:
            return {"plant", "duplicate", plant};
        default:
            return {"plant", "delete", plant, "--yes"};
        }
    }

    Words StrainCommand()
    {
        switch (Below(3))
        {
        case 0:
            return {"strain", "add", "S" + Number(1000), "--breeder", Text()};
        case 1:
            return {"strain", "edit", StrainName(), "--name", "S" + Number(1000)};
        default:
            return {"strain", "delete", StrainName(), "--yes"};
        }
    }

    // The fields of a record of this family.
    Words Fields(const std::string& family)
    {
        if (family == "care")
            return {"--action", OneOf({"feed", "water"}), "--amount-ml", Number(900), "--care-date", Date()};
        if (family == "event")
            return {"--type", OneOf({"note", "transplant", "flip", "topped"}), "--event-date", Date()};
        if (family == "harvest")
            return {"--wet-weight-g", Number(900), "--harvest-date", Date(), "--quality-rating", Number(10)};
        if (family == "photo")
            return {"--caption", Text(), "--photo-date", Date()};
        if (family == "health")
            return {"--severity", std::to_string(1 + Below(5)), "--treatment", Text()};
        return {"--type", OneOf({"training", "milestone"}), "--entry-date", Date()};
    }

    Words RecordCommand()
    {
        const std::string plant = PlantUUID();
        const std::string family = OneOf({"care", "event", "harvest", "photo", "health", "note"});
        const std::string operation = OneOf({"add", "add", "add", "edit", "delete"});
        Words words = {family, operation, plant};
        if (operation == "add")
        {
            if (family != "care" && family != "harvest")
                words.push_back("text " + Number(1000));
        }
        else if (family != "harvest")
            words.push_back(RowID(family, plant));
        const Words last = operation == "delete" ? Words{"--yes"} : Fields(family);
        words.insert(words.end(), last.begin(), last.end());
        return words;
    }

    Words Import()
    {
        const std::string uuid = "imported-" + std::to_string(Random());
        Write("source.json", R"({"Plants":[{"UUID":")" + uuid + R"(","Name":"Mint","Strain":"Spearmint"}],)" +
                                 R"("PlantCareEntries":[{"PlantUUID":")" + uuid + R"(","AmountMl":)" + Number(500) +
                                 R"(},{"PlantUUID":")" + uuid + R"("}],"PlantPhotos":[{"PlantUUID":")" + uuid +
                                 R"(","FilePath":"mint.jpg"}]})");
        return {"import", "source.json"};
    }

    Words AnyCommand()
    {
        switch (Below(10))
        {
        case 0:
        case 1:
        case 2:
            return PlantCommand();
        case 3:
            return StrainCommand();
        case 4:
            return Import();
        case 5:
            return {OneOf({"feed", "water"}), PlantUUID(), PlantUUID(), Number(500) + "ml", "--notes", Text()};
        case 6:
            return {OneOf({"feed", "water"}), "--all", "--amount", "0.5l"};
        case 7:
            return SeveralPlants();
        default:
            return RecordCommand();
        }
    }

    // A command that updates plants and writes events in one transaction.
    Words SeveralPlants()
    {
        const std::string plant = PlantUUID();
        switch (Below(5))
        {
        case 0:
            return {"clone", plant, "--count", std::to_string(1 + Below(3))};
        case 1:
            return {"stage", plant, PlantUUID(), OneOf({"veg", "flower", "dry", "cure"})};
        case 2:
            return {"transplant", "--all", "--pot", "11 l", "--medium", Text()};
        case 3:
            return {"archive", plant};
        default:
            return {OneOf({"top", "train", "defoliate"}), plant};
        }
    }

    std::string Checked() const { return Run({"check"}).Out; }

    std::mt19937_64 Random{Seed()};
    int PlantCommands = 0; // so far; each kind has its turn
};

TEST_F(UndoModelTest, UndoRestoresTheExportFromBeforeAnyCommand)
{
    std::map<std::string, int> undone;
    int refused = 0;
    for (int i = 0; i < ShortOrLong(150, 5000); ++i)
    {
        const Words words = AnyCommand();
        std::string line;
        for (const std::string& word : words)
            line += word + ' ';
        SCOPED_TRACE(line);
        const std::string before = Exported();
        const std::string checked = Checked();
        const bool isDone = Run(words).Status == 0;
        const std::string after = Exported();
        if (after == before)
        {
            refused += isDone ? 0 : 1;
            continue;
        }
        const ProgramResult undo = Run({"undo", "--yes"});
        ASSERT_EQ(undo.Status, 0) << undo.Error;
        ASSERT_EQ(Exported(), before);
        ASSERT_EQ(Checked(), checked);
        ++undone[words[0] + ' ' + (words[0] == words[1] || words[0] == "import" ? "" : words[1].substr(0, 9))];
        if (Below(4) > 0)
            Run(words); // and go on from there
    }
    EXPECT_LT(refused, 60);
    for (const char* kind : {"plant add", "plant edit", "plant delete", "plant duplicate", "strain add", "strain edit",
                             "care add", "event add", "harvest add", "photo add", "health add", "note add", "import "})
        EXPECT_GT(undone[kind], 0) << kind;
}

} // namespace
