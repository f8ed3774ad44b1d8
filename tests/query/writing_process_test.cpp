// Answers while another process writes: each is that of the model for one of the states that the process commits.

#include "query/activity_model.h"
#include "query/models.h"
#include "query/print.h"
#include "query/random_journal.h"
#include "support/child_process.h"
#include "support/journal_files.h"
#include "support/test_form.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <thread>

using namespace support;

namespace
{

struct Question
{
    std::string Name;
    std::function<std::string(PlantDatabase&)> Ask;
    std::function<std::string(PlantDatabase&)> Model;
};

template <typename Out, typename... Arguments, typename... Parameters>
std::function<std::string(PlantDatabase&)> Asked(PlantQueryResult (*query)(PlantDatabase&, Parameters...),
                                                 const Arguments&... arguments)
{
    return [=](PlantDatabase& database)
    {
        Out out;
        const PlantQueryResult result = query(database, arguments..., out);
        return result ? Printed(out) : "error: " + result.Error;
    };
}

std::vector<Question> ActivityQuestions()
{
    PlantActivityFilter filter;
    filter.Text = "a";
    filter.From = "2025";
    PlantActivityFilter one;
    one.Plants.UUIDs = {"one"};
    const auto model = [](const PlantActivityFilter& of)
    {
        return [of](PlantDatabase& database)
        {
            PlantRepository repository(database);
            return Printed(ModelActivity(repository, of));
        };
    };
    return {{"Timeline", Asked<std::vector<PlantActivity>>(QueryPlantTimeline, std::string("one")), model(one)},
            {"Activity", Asked<std::vector<PlantActivity>>(QueryPlantActivity, filter), model(filter)},
            {"Calendar", Asked<std::vector<PlantCalendarDay>>(QueryPlantCalendar, PlantActivityFilter{}),
             [](PlantDatabase& database)
             {
                 PlantRepository repository(database);
                 return Printed(ModelCalendar(repository, {}));
             }}};
}

std::vector<Question> AllQuestions()
{
    const std::string today = "2025-03-09";
    PlantTotalFilter totals;
    totals.Group = PlantTotalGroup::Plant;
    totals.Period = PlantPeriod::Month;
    const std::vector<PlantComparedSet> sets = {{"all", {}}, {"two", {{"one", "two"}, {}, {}, {}}}};
    std::vector<Question> all = ActivityQuestions();
    all.push_back({"Status", Asked<std::vector<PlantStatus>>(QueryPlantStatus, PlantSet{}, today),
                   [=](PlantDatabase& database) { return Printed(StatusModel(ListPlants(database), {}, today)); }});
    all.push_back({"Totals", Asked<std::vector<PlantTotal>>(QueryPlantTotals, totals),
                   [=](PlantDatabase& database) { return Printed(TotalModel(ListPlants(database), totals)); }});
    all.push_back({"Comparison", Asked<std::vector<PlantComparison>>(QueryPlantComparison, sets),
                   [=](PlantDatabase& database) { return Printed(ComparisonModel(ListPlants(database), sets)); }});
    all.push_back({"Lineage", Asked<PlantLineage>(QueryPlantLineage, std::string("three")),
                   [](PlantDatabase& database) { return Printed(LineageModel(ListPlants(database), "three")); }});
    return all;
}

class WritingProcessTest : public JournalFileTest, public testing::WithParamInterface<const char*>
{
  protected:
    static constexpr int States = 6;

    std::string StateFile(int state) const { return Scratch.File("state" + std::to_string(state) + ".db"); }

    // Stores random journals, and collects the answers of the models.
    void StoreStates()
    {
        std::mt19937_64 random(Seed());
        for (int state = 0; state < States; ++state)
        {
            PlantDatabase database;
            ASSERT_TRUE(database.Open(StateFile(state)));
            FillAtRandom(database.NativeHandle(), random);
            for (const Question& question : Questions)
                Answers[question.Name].insert(question.Model(database));
        }
        std::filesystem::copy_file(StateFile(0), Path);
        PlainConnection(Path).RunSQL(std::string("PRAGMA journal_mode=") + GetParam() + ';');
    }

    // Replaces all rows of the journal again and again, each time in one transaction, until the file `end` exists.
    void WriteStates(const ParentProcess& parent) const
    {
        const PlainConnection journal(Path);
        journal.RunSQL("PRAGMA busy_timeout=20000; PRAGMA synchronous=OFF; PRAGMA ignore_check_constraints=ON;");
        for (int state = 0; state < States; ++state)
            journal.RunSQL("ATTACH '" + StateFile(state) + "' AS s" + std::to_string(state) + ';');
        for (int i = 1; !std::filesystem::exists(Scratch.File("end")); ++i)
        {
            std::string sql = "BEGIN IMMEDIATE;";
            for (const std::string table : {"PlantJournalEntries", "PlantHealthObservations", "PlantPhotos",
                                            "HarvestRecords", "PlantCareEntries", "PlantEvents", "Plants"})
                sql += "DELETE FROM main." + table + ";INSERT INTO main." + table + " SELECT * FROM s" +
                       std::to_string(i % States) + '.' + table + ';';
            journal.RunSQL(sql + "COMMIT;");
            if (i == 1)
                parent.Send("begun");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    const std::vector<Question> Questions = AllQuestions();
    std::map<std::string, std::set<std::string>> Answers; // of the models, by the name of the question
};

TEST_P(WritingProcessTest, EveryAnswerIsThatOfOneCommittedState)
{
    StoreStates();
    ChildProcess writer([&](const ParentProcess& parent) { WriteStates(parent); });
    ASSERT_EQ(writer.ReadLine(), "begun");
    std::map<std::string, std::set<std::string>> seen;
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(Path));
        // The system may let the writer wait for long.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        const auto sawOneState = [&](const Question& question) { return seen[question.Name].size() < 2; };
        for (int round = 0;
             round < ShortOrLong(150, 5'000) ||
             (std::any_of(Questions.begin(), Questions.end(), sawOneState) && std::chrono::steady_clock::now() < end);
             ++round)
            for (const Question& question : Questions)
            {
                const std::string answer = question.Ask(database);
                ASSERT_EQ(Answers[question.Name].count(answer), 1U) << question.Name << ": " << answer;
                seen[question.Name].insert(answer);
            }
    }
    std::ofstream(Scratch.File("end")) << "";
    EXPECT_EQ(writer.End(), "done");
    for (const Question& question : Questions)
        EXPECT_GT(seen[question.Name].size(), 1U) << question.Name;
}

std::string NameOfMode(const testing::TestParamInfo<const char*>& mode)
{
    return mode.param;
}

INSTANTIATE_TEST_SUITE_P(InMode, WritingProcessTest, testing::Values("DELETE", "WAL"), NameOfMode);

} // namespace
