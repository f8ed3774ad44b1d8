// Sources with bad values: each one is reported with its place, and nothing is imported.

#include "command/transfer_fixture.h"

#include <map>

using namespace support;

namespace
{

struct BadSource
{
    std::string Name;
    std::string Text; // with ^a, ^b and so on before each bad value
    Words Messages;   // each begins with the letter of a place
};

std::ostream& operator<<(std::ostream& out, const BadSource& source)
{
    return out << source.Name;
}

class BadCSVTest : public TransferTest
{
};

class BadJSONTest : public TransferTest, public testing::WithParamInterface<BadSource>
{
};

TEST_P(BadJSONTest, IsReportedWithItsPlacesAndNotImported)
{
    KeepEverything();
    std::string text;
    std::map<char, std::string> places;
    int line = 1;
    int column = 1;
    for (std::size_t i = 0; i < GetParam().Text.size(); ++i)
    {
        const char letter = GetParam().Text[i];
        if (letter == '^')
        {
            places[GetParam().Text.at(++i)] = std::to_string(line) + ':' + std::to_string(column);
            continue;
        }
        text += letter;
        line += letter == '\n' ? 1 : 0;
        column = letter == '\n' ? 1 : column + 1;
    }
    std::string expected;
    for (const std::string& message : GetParam().Messages)
        expected += "source.json:" + places.at(message.at(0)) + message.substr(1) + '\n';
    expected += "plantjournal: source.json: errors: " + std::to_string(GetParam().Messages.size()) +
                "; nothing was imported; correct them and import again\n";
    EXPECT_EQ(RefusedText(text), expected);
}

INSTANTIATE_TEST_SUITE_P(
    With, BadJSONTest,
    testing::Values(
        BadSource{"Values",
                  R"({"Plants": [
 {"Name": "x",
  "Stage": ^a"bad", "FlipHeightCm": ^b"q"},
 {"Name": "b", "Sex": ^c"", "ID": ^d1.5}],
"PlantHealthObservations": [
 {"PlantUUID": "0b0b0b0b-0000-4000-8000-000000000001", "Severity": ^e6}]})",
                  {"a: Stage: \"bad\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived",
                   "b: FlipHeightCm: \"q\" is not a number",
                   "c: Sex: \"\" is not one of Unknown, Female, Male, Hermaphrodite",
                   "d: ID: \"1.5\" is not a whole number", "e: Severity: \"6\" is not from 1 to 5"}},
        BadSource{"NoValues",
                  R"({"Plants": [{"Name": ^anull,
"Tent": ^btrue},{"Name": ^c{"Hex": "zz"}},
{"Name": ^d{"Hex": "fff"}}]})",
                  {"a: null is not allowed", "b: true and false are not allowed",
                   "c: \"zz\" is not hexadecimal; write two digits for each byte",
                   "d: \"fff\" is not hexadecimal; write two digits for each byte"}},
        BadSource{"Numbers",
                  R"({"HarvestRecords":[{"PlantUUID":"0b0b0b0b-0000-4000-8000-000000000002",
"SeedYield":^a3000000000,
"DryWeightG":^b"nan",
"ID":^c99999999999999999999},
{"PlantUUID":^e"0b0b0b0b-0000-4000-8000-000000000002","SeedYield":^d-99999999999}]})",
                  {"a: SeedYield: \"3000000000\" is too large", "b: DryWeightG: \"nan\" is not a number",
                   "c: ID: \"99999999999999999999\" is too large", "d: SeedYield: \"-99999999999\" is too small",
                   "e: PlantUUID: the plant already has a harvest record"}},
        BadSource{"ZeroByte",
                  R"({"Plants":[{"Name":^a"x\u0000b"},{"Name":^b{"Hex":"00"}}]})",
                  {"a: Name: contains a zero byte", "b: Name: contains a zero byte"}},
        BadSource{"FieldsAndTables",
                  R"(^c{"Plants":[{"Nme":^a"x"},{"Name":"x","Name":^b"y"}],"Animals":[{"Name":"dog"}]})",
                  {"a: Plants has no field \"Nme\"", "b: Name occurs twice",
                   "c: \"Animals\" is not a table of the journal; the tables are Strains, Plants, PlantEvents, "
                   "PlantCareEntries, HarvestRecords, PlantPhotos, PlantHealthObservations, PlantJournalEntries"}},
        BadSource{"TwoTables", R"({"Plants":[],"Plants":^a[]})", {"a: the table \"Plants\" occurs twice"}},
        BadSource{"Relations",
                  R"({"Plants":[{"UUID":"x","Name":"x","MotherPlantUUID":^a"none"}],
"PlantEvents":[{"PlantUUID":"x","ID":1},{"PlantUUID":^c"y","ID":^b1}],
"PlantCareEntries":[{"PlantUUID":^d"z"},{"PlantUUID":"x","TimelineEventID":^e7}],
"PlantJournalEntries":[^f{"Details":"of nobody"}]})",
                  {"a: MotherPlantUUID: no plant has the UUID \"none\"", "b: ID: 1 occurs twice",
                   "c: PlantUUID: no plant has the UUID \"y\"", "d: PlantUUID: no plant has the UUID \"z\"",
                   "e: TimelineEventID: no event of this import has the row ID 7",
                   "f: PlantUUID: is empty; give the UUID of a plant, or its name in Plant"}},
        BadSource{"Twice",
                  R"({"Strains":[{"Name":^a""},{"Name":"s"},{"Name":^b"s"}],
"Plants":[{"UUID":^c"0b0b0b0b-0000-4000-8000-000000000001"},{"UUID":"x"},{"UUID":^d"x"}],
"HarvestRecords":[{"PlantUUID":^e"0b0b0b0b-0000-4000-8000-000000000001"},{"PlantUUID":"x"},{"PlantUUID":^f"x"}],
"PlantPhotos":[{"PlantUUID":"x","UUID":^g"0b0b0b0b-0000-4000-8000-000000000009","FilePath":"p"}]})",
                  {"a: Name: is empty", "b: Name: \"s\" occurs twice",
                   "c: UUID: \"0b0b0b0b-0000-4000-8000-000000000001\" is already in the journal",
                   "d: UUID: \"x\" occurs twice", "e: PlantUUID: the plant already has a harvest record",
                   "f: PlantUUID: the plant already has a harvest record", "g: UUID: that UUID is already in use"}},
        BadSource{"Lineage",
                  R"({"Plants":[{"UUID":"x","MotherPlantUUID":^a"y"},
{"UUID":"y","MotherPlantUUID":^b"x"},
{"UUID":"z","MotherPlantUUID":^c"z"},
{"UUID":"w","MotherPlantUUID":^d"x"}]})",
                  {"a: MotherPlantUUID: the plant descends from itself",
                   "b: MotherPlantUUID: the plant descends from itself",
                   "c: MotherPlantUUID: the plant descends from itself",
                   "d: MotherPlantUUID: the plant descends from itself"}},
        BadSource{
            "Format", R"({"Format":^a2})", {"a: unknown export format 2; a newer version may be able to read it"}},
        BadSource{"NoObject", "^a[]", {"a: unexpected array"}},
        BadSource{"NoTable", R"({"Plants":^a{}})", {"a: unexpected object"}},
        BadSource{"NoRecord", R"({"Plants":^a[5]})", {"a: unexpected value"}},
        BadSource{"NoText", R"({"Plants":[{"Name":^a["x"]}]})", {"a: unexpected array"}},
        BadSource{"NoJSON", "^adear diary", {"a: syntax error while parsing value - invalid literal; last read: 'd'"}},
        BadSource{"RecordWithoutEnd",
                  R"({"Plants":[{"Stage":^b"bad",^a}]})",
                  {"a: syntax error while parsing object key - unexpected '}'; expected string literal",
                   "b: Stage: \"bad\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived"}},
        BadSource{"Cut",
                  "{\"Plants\":[{\"Name\":\"a\"},\n{\"N^aa",
                  {"a: syntax error while parsing object key - invalid string: missing closing quote; last read: "
                   "'\"Na'; expected string literal"}}),
    [](const auto& test) { return test.param.Name; });

TEST_F(BadCSVTest, EveryBadValueIsReportedWithItsPlace)
{
    KeepEverything();
    Write("csv/Plants.csv", "Name,Stage,FlipHeightCm\na,bad,1\nb,veg,\"x\ny\"\nc,veg\nd,veg,1,2\n");
    Write("csv/Strains.csv", "Name,Weeks\ns,1\n");
    Write("csv/Animals.csv", "Name\ndog\n");
    Write("csv/PlantPhotos.csv", "");
    Write("csv/PlantEvents.csv", "PlantUUID,Details\na,\"open\n");
    Write("csv/HarvestRecords.csv", "PlantUUID,Notes\na,\"b\"c\n");
    Write("csv/PlantJournalEntries.csv", "PlantUUID\nmaybe in the part that cannot be read\n");
    EXPECT_EQ(
        Refused({"import", "csv"}),
        "csv/HarvestRecords.csv:2:6: a comma or the end of the line must follow a quoted value\n"
        "csv/PlantEvents.csv:2:4: a quoted value has no closing quotation mark\n"
        "csv/PlantPhotos.csv:1:1: the header line is missing\n"
        "csv/Plants.csv:5:1: 2 values for 3 columns\n"
        "csv/Plants.csv:6:1: 4 values for 3 columns\n"
        "csv/Animals.csv:1:1: \"Animals\" is not a table of the journal; the tables are Strains, Plants, PlantEvents, "
        "PlantCareEntries, HarvestRecords, PlantPhotos, PlantHealthObservations, PlantJournalEntries\n"
        "csv/Plants.csv:2:3: Stage: \"bad\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived\n"
        "csv/Plants.csv:3:7: FlipHeightCm: \"x y\" is not a number\n"
        "csv/Strains.csv:2:3: Strains has no field \"Weeks\"\n"
        "plantjournal: csv: errors: 9; nothing was imported; correct them and import again\n");
}

} // namespace
