#include "journal/last_care.h"

#include "journal/sql.h"

std::map<std::string, LastCare> LastCareOfPlants(Session& session)
{
    session.Read();
    const SQL connection(session.Connection(), session.Path() + ": the care entries cannot be read");
    Statement newest(connection,
                     "SELECT PlantUUID,CareDate,Action FROM Plants JOIN PlantCareEntries AS Care ON Care.ID="
                     "(SELECT ID FROM PlantCareEntries WHERE PlantUUID=Plants.UUID "
                     "ORDER BY CareDate DESC,ID DESC LIMIT 1);");
    std::map<std::string, LastCare> lastCare;
    while (newest.Step())
        lastCare[newest.Text(0)] = {newest.Text(1), newest.Text(2)};
    return lastCare;
}
