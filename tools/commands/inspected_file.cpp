#include "commands/inspected_file.h"

#include "record/text.h"

#include <utility>

const char* KindInWords(PlantFileKind kind)
{
    switch (kind)
    {
    case PlantFileKind::Missing:
        return "no such file yet";
    case PlantFileKind::Empty:
        return "empty file";
    case PlantFileKind::Current:
        return "journal, current schema";
    case PlantFileKind::Older:
        return "journal, earlier schema";
    case PlantFileKind::Interrupted:
        return "journal with an interrupted write";
    case PlantFileKind::Foreign:
        return "not a plantjournal file";
    case PlantFileKind::NotADatabase:
        return "not an SQLite database";
    case PlantFileKind::Damaged:
        return "damaged file";
    case PlantFileKind::Locked:
        return "file that another program is writing to";
    }
    return "";
}

std::string ContentInWords(const PlantFileInspection& file)
{
    if (file.Kind != PlantFileKind::Current && file.Kind != PlantFileKind::Older)
        return KindInWords(file.Kind);
    std::int64_t plants = 0;
    std::int64_t others = 0;
    for (const PlantFileTable& table : file.Tables)
        (table.Name == "Plants" ? plants : others) += table.Rows;
    return Joined({std::to_string(plants) + (plants == 1 ? " plant" : " plants"),
                   std::to_string(others) + (others == 1 ? " other record" : " other records"),
                   file.LastDate.empty() ? "" : "last date " + file.LastDate},
                  ", ");
}

JSON InspectionJSON(const std::string& path, const PlantFileInspection& file)
{
    JSON tables = JSON::Object();
    for (const PlantFileTable& table : file.Tables)
        tables.Add(table.Name, JSONOf(table.Rows));
    JSON object = JSON::Object();
    object.Add("File", JSONOf(path));
    object.Add("Kind", JSONOf(std::string(PlantFileKindName(file.Kind))));
    object.Add("Bytes", JSONOf(file.Bytes));
    object.Add("FirstDate", JSONOf(file.FirstDate));
    object.Add("LastDate", JSONOf(file.LastDate));
    object.Add("Steps", JSONOf(file.Steps));
    object.Add("Reasons", JSONOf(file.Reasons));
    object.Add("Tables", std::move(tables));
    return object;
}
