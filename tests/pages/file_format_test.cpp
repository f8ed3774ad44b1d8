// Compares docs/file-format.md and its diagram with a new file and with files of every earlier schema.

#include "plant_file.h"
#include "support/journal_test.h"
#include "support/page.h"
#include "testing/old_files.h"

#include <algorithm>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using namespace support;

namespace
{

const std::string FileFormatPage = "docs/file-format.md";

class FileFormatPageTest : public JournalTest
{
  protected:
    std::vector<std::string> TableNames() const
    {
        std::vector<std::string> names;
        for (const Row& row : QueryRows("SELECT name FROM sqlite_master WHERE type='table' ORDER BY rowid;"))
            names.push_back(row[0]);
        return names;
    }

    // Returns the default without the quotes of SQL.
    static std::string Default(const Row& column)
    {
        if (column[4] == "NULL" || column[4] == "''")
            return column[4] == "''" ? "empty" : "";
        return column[4].starts_with('\'') ? column[4].substr(1, column[4].size() - 2) : column[4];
    }

    // Returns the fourth cell of a column's row.
    std::string Rules(const std::string& table, const Row& column) const
    {
        std::string rules;
        const auto add = [&](const std::string& rule) { rules += (rules.empty() ? "" : ", ") + rule; };
        const bool key = column[5] == "1";
        if (key)
            add("primary key");
        for (const Row& index : QueryRows("PRAGMA index_list(" + table + ");"))
            if (index[3] == "u" && QueryRows("PRAGMA index_info(" + index[1] + ");")[0][2] == column[1])
                add("unique");
        for (const Row& link : QueryRows("PRAGMA foreign_key_list(" + table + ");"))
            if (link[3] == column[1])
                add("refers to " + link[2] + '(' + link[4] + "), " + link[6]);
        if (column[3] == "0" && !key)
            add("may be NULL");
        if (column[1] == "Severity")
            add("1 to 5");
        for (const auto& row : TableRows(FileFormatPage, "## Stored names"))
            if (Plain(row[0]) == table + '.' + column[1])
                add("a stored name");
        return rules;
    }

    // Returns the statements that created the tables and indexes, as the file stores them.
    Row Definitions() const
    {
        Row definitions;
        for (const Row& row : QueryRows("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid;"))
            definitions.push_back(row[0] + ';');
        return definitions;
    }
};

TEST_F(FileFormatPageTest, EveryColumnIsShownAsInANewFile)
{
    for (const std::string& table : TableNames())
    {
        Rows columns;
        for (const Row& column : QueryRows("PRAGMA table_info(" + table + ");"))
            columns.push_back({column[1], column[2], Default(column), Rules(table, column)});
        Rows shown;
        for (Row row : TableRows(FileFormatPage, "### " + table))
        {
            EXPECT_EQ(row.size(), 5);
            row.resize(4);
            std::transform(row.begin(), row.end(), row.begin(), Plain);
            shown.push_back(row);
        }
        EXPECT_EQ(shown, columns) << table;
    }
}

TEST_F(FileFormatPageTest, TheStatementsAreThoseOfANewFile)
{
    const std::vector<std::string> blocks = CodeBlocks(FileFormatPage, "sql");
    ASSERT_EQ(blocks.size(), 1);
    std::string statements;
    for (const std::string& definition : Definitions())
        statements += definition + '\n';
    EXPECT_EQ(std::regex_replace(blocks[0], std::regex("\n +"), " "), statements);
}

TEST_F(FileFormatPageTest, TheStoredNamesAreThoseOfTheEnumerations)
{
    const auto names = [](auto name, auto last)
    {
        std::string all;
        for (int number = 0; number <= static_cast<int>(last); ++number)
            all += (number == 0 ? "" : ", ") + std::string(name(static_cast<decltype(last)>(number)));
        return all;
    };
    const Rows expected = {{"Plants.Stage", names(PlantStageName, PlantStage::Archived), PlantStageName(Plant{}.Stage)},
                           {"Plants.Sex", names(PlantSexName, PlantSex::Hermaphrodite), PlantSexName(Plant{}.Sex)},
                           {"PlantEvents.EventType", names(PlantEventTypeName, PlantEventType::Note),
                            PlantEventTypeName(PlantEvent{}.Type)},
                           {"PlantCareEntries.Action", names(PlantCareActionName, PlantCareAction::Water),
                            PlantCareActionName(PlantCareEntry{}.Action)},
                           {"PlantJournalEntries.Type", names(PlantJournalTypeName, PlantJournalType::Milestone),
                            PlantJournalTypeName(PlantJournalEntry{}.Type)}};
    Rows shown;
    for (Row row : TableRows(FileFormatPage, "## Stored names"))
    {
        row[0] = Plain(row[0]);
        shown.push_back(row);
    }
    EXPECT_EQ(shown, expected);
}

// Joins consecutive steps of the same kind.
std::string Grouped(const std::vector<std::string>& steps)
{
    std::string text;
    std::string last;
    for (const std::string& step : steps)
    {
        const std::size_t name = step.rfind(' ') + 1;
        const std::string verb = step.substr(0, name);
        if (verb == last)
            text += ", " + step.substr(name);
        else
            text += (text.empty() ? "" : "; ") + step;
        last = verb;
    }
    return text.empty() ? "nothing" : text;
}

TEST_F(FileFormatPageTest, EveryEarlierSchemaIsShownWithItsMigration)
{
    Rows schemas;
    for (const OldFile& file : OldFiles())
    {
        const std::string path = Scratch.File("old.db");
        WriteOldFile(path, file);
        PlantFileInspection found;
        EXPECT_TRUE(InspectPlantSchema(path, found));
        schemas.push_back({file.Name, Grouped(found.Steps)});
    }
    Rows shown;
    for (const Row& row : TableRows(FileFormatPage, "## Earlier schemas"))
        if (row.size() == 3)
            shown.push_back({Plain(row[0]), row[2]});
    EXPECT_EQ(shown, schemas);
}

TEST_F(FileFormatPageTest, TheRebuildConvertsEventsAsShown)
{
    Rows shown;
    for (const Row& row : TableRows(FileFormatPage, "## Earlier schemas"))
        if (row.size() == 4)
            shown.push_back(row);
    EXPECT_EQ(shown.size(), 14);

    const std::string path = Scratch.File("old.db");
    WriteOldFile(path, *std::find_if(OldFiles().begin(), OldFiles().end(),
                                     [](const OldFile& file) { return file.Name == "10_unchecked"; }));
    {
        const PlainConnection old(path);
        old.RunSQL("DELETE FROM PlantEvents;");
        for (const Row& row : shown)
            old.RunSQL("INSERT INTO PlantEvents(PlantUUID,EventType,Details) SELECT UUID,'" + row[0] + "','" + row[1] +
                       "' FROM Plants LIMIT 1;");
    }
    PlantDatabase database;
    ASSERT_TRUE(database.Open(path));
    Rows converted;
    std::size_t number = 0;
    for (const Row& row :
         ::QueryRows(database.NativeHandle(), "SELECT EventType,Details FROM PlantEvents ORDER BY ID;"))
    {
        converted.push_back({shown[number][0], shown[number][1], row[0], row[1]});
        ++number;
    }
    EXPECT_EQ(converted, shown);
}

// ---- The diagram

TEST_F(FileFormatPageTest, TheDiagramShowsEveryTableAndColumn)
{
    std::vector<std::string> expected;
    for (const std::string& table : TableNames())
    {
        expected.push_back(table);
        for (const Row& column : QueryRows("PRAGMA table_info(" + table + ");"))
            expected.push_back(column[1]);
    }
    std::sort(expected.begin(), expected.end());
    // In the source of the diagram and in the generated file.
    for (const auto& [file, pattern] : {std::pair("docs/file-format.dot", "(?:<b>|align=\"left\">)([^<]+)<"),
                                        {"docs/file-format.svg", "<text[^>]*>([^<]+)<"}})
    {
        const std::string text = PageText(file);
        const std::regex label(pattern);
        std::vector<std::string> labels;
        for (std::sregex_iterator match(text.begin(), text.end(), label), end; match != end; ++match)
            labels.push_back((*match)[1]);
        std::sort(labels.begin(), labels.end());
        EXPECT_EQ(labels, expected) << file;
    }
}

TEST_F(FileFormatPageTest, TheDiagramShowsEveryLinkInTheStyleOfItsRule)
{
    const std::map<std::string, std::string> styles = {{"CASCADE", "solid"}, {"SET NULL", "dotted"}};
    std::set<std::string> expected = {"dashed Plants:Strain -> Strains:Name"};
    for (const std::string& table : TableNames())
        for (const Row& link : QueryRows("PRAGMA foreign_key_list(" + table + ");"))
            expected.insert(styles.at(link[6]) + ' ' + table + ':' + link[3] + " -> " + link[2] + ':' + link[4]);

    std::set<std::string> drawn;
    std::multiset<std::string> ends;
    std::string style;
    std::istringstream lines(PageText("docs/file-format.dot"));
    for (std::string line; std::getline(lines, line);)
    {
        std::smatch match;
        if (std::regex_search(line, match, std::regex("^    edge \\[style=(\\w+)")))
            style = match[1];
        if (std::regex_search(line, match, std::regex(R"(^    (\w+):(\w+)(?::\w)? -> (\w+):(\w+))")))
        {
            drawn.insert(style + ' ' + match[1].str() + ':' + match[2].str() + " -> " + match[3].str() + ':' +
                         match[4].str());
            ends.insert(match[1].str() + "->" + match[3].str());
        }
    }
    EXPECT_EQ(drawn, expected);

    // An outdated diagram would still have the old lines.
    std::multiset<std::string> made;
    const std::string picture = std::regex_replace(PageText("docs/file-format.svg"), std::regex("&#45;&gt;"), "->");
    const std::regex title("<title>(\\w+):[^<]*->(\\w+):[^<]*</title>");
    for (std::sregex_iterator match(picture.begin(), picture.end(), title), end; match != end; ++match)
        made.insert((*match)[1].str() + "->" + (*match)[2].str());
    EXPECT_EQ(made, ends);
}

// ---- Other programs

TEST_F(FileFormatPageTest, AnAdditionMakesAFileForeignButItStillOpens)
{
    for (const std::string statement :
         {"CREATE TABLE Added(x);", "ALTER TABLE Plants ADD COLUMN Added;", "CREATE VIEW Added AS SELECT 1;",
          "CREATE INDEX Added ON Plants(Tent);", "CREATE TRIGGER Added AFTER INSERT ON Plants BEGIN SELECT 1; END;",
          "PRAGMA journal_mode=WAL;"})
    {
        SCOPED_TRACE(statement);
        const std::string path = Scratch.File("added.db");
        EXPECT_TRUE(PlantDatabase().Open(path));
        PlainConnection(path).RunSQL(statement);
        PlantFileInspection found;
        EXPECT_TRUE(InspectPlantDatabase(path, found));
        EXPECT_EQ(found.Kind, PlantFileKind::Foreign);
        std::vector<PlantFileFinding> findings;
        EXPECT_FALSE(CheckPlantDatabase(path, findings));
        EXPECT_FALSE(BackUpPlantDatabase(path, Scratch.File("copy.db")));
        EXPECT_TRUE(PlantDatabase().Open(path));
        std::filesystem::remove(path);
    }
}

TEST_F(FileFormatPageTest, VacuumLeavesTheFileCurrent)
{
    NewPlant("Basil", "Genovese");
    const std::string before = Content();
    PlainConnection(Path).RunSQL("VACUUM;");
    EXPECT_EQ(Content(), before);
    PlantFileInspection found;
    EXPECT_TRUE(InspectPlantDatabase(Path, found));
    EXPECT_EQ(found.Kind, PlantFileKind::Current);
}

} // namespace
