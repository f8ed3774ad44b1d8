// Compares the answers with the model on random journals.

#include "query/activity_model.h"
#include "query/query_test.h"
#include "query/random_journal.h"
#include "support/test_form.h"

#include <algorithm>
#include <random>

using namespace support;

namespace
{

// Without the case of two alphabets.
std::string WithoutAnyCase(const std::string& text)
{
    std::string folded;
    for (const char c : text)
        folded += c == '\x84' ? '\xA4' : static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); // Ä and ä in UTF-8
    return folded;
}

class ActivityModelTest : public QueryTest
{
  protected:
    template <typename Value> std::vector<Value> Some(const std::vector<Value>& values)
    {
        std::vector<Value> some;
        if (Random() % 3 != 0)
            return some;
        for (auto i = static_cast<int>(Random() % 3) + 1; i > 0; --i)
            some.push_back(OneOf(values));
        return some;
    }

    template <typename Value> Value OneOf(const std::vector<Value>& values)
    {
        return values.at(static_cast<std::size_t>(Random() % values.size()));
    }

    PlantActivityFilter RandomFilter()
    {
        PlantActivityFilter filter;
        filter.Plants.UUIDs = Some(RandomUUIDs());
        if (Random() % 4 == 0)
            filter.Plants.Strains = Some(RandomNames());
        if (Random() % 4 == 0)
            filter.Plants.Tents = Some(RandomNames());
        if (Random() % 4 == 0)
            filter.Plants.Stages = Some<PlantStage>({PlantStage::Veg, PlantStage::Flower, PlantStage::Dry});
        filter.Kinds = Some<std::string>({"Flip", "Harvest", "Feed", "Water", "Note", "Sown", "Clone", "Health",
                                          "Photo", "Training", "Observation", "flip", "Nothing"});
        filter.From = Random() % 2 == 0 ? "" : OneOf(RandomDates());
        filter.To = Random() % 2 == 0 ? "" : OneOf(RandomDates());
        filter.Text = OneOf<std::string>({"", "", "", "A", "äpfel", "flip", "FEED", " | ", "0 ml", "%", "of 5"});
        if (Random() % 2 == 0)
            filter.Fold = WithoutAnyCase;
        filter.Order = Random() % 2 == 0 ? PlantActivityOrder::NewestFirst : PlantActivityOrder::OldestFirst;
        filter.AtMost = OneOf<std::int64_t>({0, 0, 1, 3, 1000, -1});
        return filter;
    }

    std::mt19937_64 Random{Seed()};
};

TEST_F(ActivityModelTest, EveryAnswerOnRandomJournalsIsThatOfTheModel)
{
    std::size_t activities = 0;
    for (int round = 0; round < ShortOrLong(150, 5'000); ++round)
    {
        FillAtRandom(Database.NativeHandle(), Random);
        for (int i = 0; i < 8; ++i)
        {
            const PlantActivityFilter filter = i == 0 ? PlantActivityFilter{} : RandomFilter();
            const auto found = AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, filter);
            ASSERT_EQ(Printed(found), Printed(ModelActivity(Repository, filter))) << "round " << round;
            const auto days = AnswerOf<std::vector<PlantCalendarDay>>(QueryPlantCalendar, filter);
            ASSERT_EQ(Printed(days), Printed(ModelCalendar(Repository, filter))) << "round " << round;
            activities += found.size();
        }
        for (const std::string& uuid : RandomUUIDs())
        {
            PlantActivityFilter filter;
            filter.Plants.UUIDs = {uuid};
            const auto timeline = AnswerOf<std::vector<PlantActivity>>(QueryPlantTimeline, uuid);
            ASSERT_EQ(Printed(timeline), Printed(ModelActivity(Repository, filter))) << "round " << round;
        }
    }
    EXPECT_GT(activities, 5'000U);
}

} // namespace
