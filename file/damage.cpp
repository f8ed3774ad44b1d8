#include "damage.h"

#include "access.h"

#include <sstream>
#include <string>

namespace plant_file
{

void FindDamage(sqlite3* db, std::vector<PlantFileFinding>& findings)
{
    constexpr const char* step = "checking the file";
    // A value that its column does not allow leaves the file readable. SQLite would look for one on a connection that
    // may write, and only there.
    RunSQL(db, step, "PRAGMA ignore_check_constraints=ON;");
    ForEachRow(db, step, "PRAGMA integrity_check;",
               [&](sqlite3_stmt* row)
               {
                   std::istringstream lines(ColumnText(row, 0));
                   for (std::string line; std::getline(lines, line);)
                   {
                       if (line.find("unable to get the page") != std::string::npos) // a read or an allocation failed
                           Fail(step, line);
                       if (line == "ok" || line.compare(0, 3, "***") == 0) // asterisks begin a heading
                           continue;
                       PlantFileFinding& finding = findings.emplace_back();
                       finding.Kind = PlantFindingKind::Damage;
                       finding.Description = line + '.';
                   }
               });
}

} // namespace plant_file
