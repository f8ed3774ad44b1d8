#include "activities.h"

PlantQueryResult QueryPlantTimeline(PlantDatabase& database, const std::string& plantUUID,
                                    std::vector<PlantActivity>& out)
{
    using namespace plant_query;
    return Answer<std::vector<PlantActivity>>(database, out,
                                              [&](sqlite3* /*connection*/)
                                              {
                                                  PlantActivityFilter filter;
                                                  filter.Plants.UUIDs.push_back(plantUUID);
                                                  std::vector<PlantActivity> activities =
                                                      SelectedActivities(database, filter, ActivityTexts::Read);
                                                  SortNewestFirst(activities);
                                                  return activities;
                                              });
}
