#include "support/power_loss.h"

namespace support
{

std::string OpenedContent()
{
    constexpr auto ownersWithoutTheirEvent =
        "SELECT 'care entry',o.ID FROM PlantCareEntries o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID AND "
        "e.PlantUUID=o.PlantUUID AND e.EventDate=o.CareDate AND e.EventType=o.Action "
        "WHERE o.TimelineEventID IS NOT NULL AND e.ID IS NULL UNION ALL "
        "SELECT 'harvest',o.ID FROM HarvestRecords o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID AND "
        "e.PlantUUID=o.PlantUUID AND e.EventDate=o.HarvestDate AND e.EventType='Harvest' "
        "WHERE o.TimelineEventID IS NOT NULL AND e.ID IS NULL;";
    PlantDatabase database;
    std::string error;
    EXPECT_TRUE(database.Open(JournalName, &error)) << error;
    if (!database.IsOpen())
        return {};
    EXPECT_EQ(Damage(database.NativeHandle()), "ok");
    EXPECT_EQ(QueryRows(database.NativeHandle(), ownersWithoutTheirEvent), Rows{});
    return Content(database.NativeHandle());
}

void PowerLossTest::Begin(const Durability& durability)
{
    Disk = {};
    Disk.UnlinksPersist = durability.UnlinksPersist;
    Pragma = durability.Pragma;
}

Interruption PowerLossTest::InterruptOpening(int call)
{
    PlantDatabase database;
    Disk.CutPowerAt(call);
    const bool opened = database.Open(JournalName);
    return {opened, CutPower()};
}

bool PowerLossTest::CutPower()
{
    const bool wasOn = !Disk.IsOff();
    Disk.CutPower();
    return wasOn;
}

} // namespace support
