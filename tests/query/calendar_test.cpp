#include "query/query_test.h"

using namespace support;

namespace
{

class QueryCalendarTest : public QueryTest
{
  protected:
    QueryCalendarTest()
    {
        const Plant basil = NewPlant("Basil");
        const Plant mint = NewPlant("Mint");
        Store(basil, "2025-03-02", "red");
        Store(mint, "2025-03-02", "blue");
        Store(basil, "2025-03-01", "red");
        PlantCareEntry care;
        care.CareDate = "2025-03-02";
        care.Action = PlantCareAction::Feed;
        Stored(care, mint, &PlantRepository::CreatePlantCareEntry);
    }

    void Store(const Plant& plant, const std::string& date, const std::string& details)
    {
        PlantEvent event;
        event.EventDate = date;
        event.Details = details;
        Stored(event, plant, &PlantRepository::CreatePlantEvent);
    }

    std::string Days() { return Printed(AnswerOf<std::vector<PlantCalendarDay>>(QueryPlantCalendar, Filter)); }

    PlantActivityFilter Filter;
};

TEST_F(QueryCalendarTest, DaysAreSortedByDateAndThenByKind)
{
    EXPECT_EQ(Days(), "2025-03-01 \"Note\" 1\n2025-03-02 \"Feed\" 1\n2025-03-02 \"Note\" 2\n");
}

TEST_F(QueryCalendarTest, TheOrderAndTheMostOfTheFilterHaveNoEffect)
{
    const std::string days = Days();
    Filter.Order = PlantActivityOrder::OldestFirst;
    Filter.AtMost = 1;
    EXPECT_EQ(Days(), days);
}

TEST_F(QueryCalendarTest, OnlySelectedActivitiesAreCounted)
{
    Filter.Text = "RED";
    EXPECT_EQ(Days(), "2025-03-01 \"Note\" 1\n2025-03-02 \"Note\" 1\n");
    Filter.From = "2025-03-02";
    EXPECT_EQ(Days(), "2025-03-02 \"Note\" 1\n");
    Filter.Text = "";
    Filter.Kinds = {"Feed"};
    EXPECT_EQ(Days(), "2025-03-02 \"Feed\" 1\n");
    Filter.Plants.UUIDs = {"unknown"};
    EXPECT_EQ(Days(), "");
}

} // namespace
