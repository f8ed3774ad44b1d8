#include "commands/record_lists.h"

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/shown_uuids.h"
#include "terminal/printable.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace
{

struct ListRequest
{
    Arguments Given;
    std::optional<std::string> Newest; // only this many of the newest records of each plant
};

template <typename Record> std::vector<Record> NewestOf(Session& session, const Plant& plant, std::int64_t newest)
{
    std::vector<Record> records = RecordsOf<Record>(session, plant);
    if (newest < static_cast<std::int64_t>(records.size()))
        records.resize(static_cast<std::size_t>(newest));
    return records;
}

template <typename Record> void List(Session& session, const ListRequest& request)
{
    const Description<Record>& kind = Describe<Record>();
    const bool ofOnePlant = !request.Given.Plant.empty();
    const std::vector<Plant> plants =
        ofOnePlant ? std::vector<Plant>{FindPlant(session, request.Given.Plant)} : AllPlants(session);
    const UUIDTexts uuids = ShownUUIDs(plants);
    JSON array = JSON::Array();
    std::vector<Row> rows;
    for (const Plant& plant : plants)
        for (const Record& record : NewestOf<Record>(session, plant, NumberFrom(request.Newest)))
        {
            array.Add(RecordJSON(record, plant));
            rows.push_back(RowOf(record));
            if (!ofOnePlant)
                rows.back().insert(rows.back().begin(), plant.Name.empty() ? uuids.at(plant.UUID) : plant.Name);
        }
    std::vector<Column> columns = ColumnsOf<Record>();
    if (!ofOnePlant)
        columns.insert(columns.begin(), {"Plant", WhenNarrow::Keep});

    if (session.AsJSON)
        PrintJSON(array);
    else if (rows.empty())
        std::cout << (ofOnePlant ? Printable(DisplayName(plants.front())) + ": no " : "No ") << kind.Plural
                  << " yet; `plantjournal " << kind.Command << " add PLANT` adds one.\n";
    else
        PrintTable(std::cout, columns, rows);
}

} // namespace

template <typename Record> void AddListCommand(CLI::App& group, Session& session)
{
    const std::string name = Describe<Record>().Command;
    auto request = std::make_shared<ListRequest>();
    CLI::App& list = AddCommand(group, "list", "List the records of one plant, or of all plants",
                                name + " list Basil\n" + name + " list --newest 5 --json",
                                [&session, request] { List<Record>(session, *request); });
    AddPlantArgument(list, request->Given, Need::Optional);
    AddNewest(list, "list only this many of the newest records of each plant", request->Newest);
}

template void AddListCommand<PlantEvent>(CLI::App& group, Session& session);
template void AddListCommand<PlantCareEntry>(CLI::App& group, Session& session);
template void AddListCommand<HarvestRecord>(CLI::App& group, Session& session);
template void AddListCommand<PlantPhoto>(CLI::App& group, Session& session);
template void AddListCommand<PlantHealthObservation>(CLI::App& group, Session& session);
template void AddListCommand<PlantJournalEntry>(CLI::App& group, Session& session);
