#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/deletion.h"
#include "commands/field_flags.h"
#include "commands/name_notices.h"
#include "commands/outcome.h"
#include "commands/print.h"
#include "commands/summary.h"
#include "journal/find_record.h"

#include <algorithm>
#include <memory>

namespace
{

void AddNameArgument(CLI::App& command, Arguments& arguments)
{
    AddArgument(command, "STRAIN", "name of the strain", arguments.Name);
}

void ShowStrain(Session& session, const std::string& name)
{
    StrainSummary summary;
    session.Require(session.Read().GetStrainSummary(FindStrain(session, name).ID, summary),
                    "the strain cannot be summarised");
    if (session.AsJSON)
        PrintJSON(RecordJSON(summary));
    else
        PrintDescription(std::cout, PropertiesOf(summary));
}

void ListStrains(Session& session)
{
    const std::vector<Strain> strains = AllStrains(session);
    std::vector<Row> rows(strains.size());
    std::transform(strains.begin(), strains.end(), rows.begin(), RowOf<Strain>);
    if (session.AsJSON)
        PrintJSON(RecordsJSON(strains));
    else if (rows.empty())
        std::cout << "No strains yet; `plantjournal strain add NAME` adds one.\n";
    else
        PrintTable(std::cout, ColumnsOf<Strain>(), rows);
}

void AddStrain(Session& session, const Request<Strain>& request)
{
    Strain strain;
    request.Fields->Apply(session, FlagsFor::Add, strain);
    PrintNotices(CheckValues(strain));
    PlantRepository& repository = session.Write();
    const NameNotices names(session);
    session.Require(repository.CreateStrain(strain), "the strain could not be added");
    ReportStored(session, SummaryOfNew(strain), strain.Name, RecordJSON(strain));
    names.Print(strain);
}

void EditStrain(Session& session, const Request<Strain>& request)
{
    RequireAnyField(request);
    const Strain before = FindStrain(session, request.Given.Name);
    Strain strain = before;
    request.Fields->Apply(session, FlagsFor::Edit, strain);
    PrintNotices(CheckValues(strain, request.Fields->Names()));
    PlantRepository& repository = session.Write();
    const NameNotices names(session);
    session.Require(repository.UpdateStrain(strain), "the strain could not be changed");
    ReportStored(session, SummaryOfChanged(before, strain, request.Fields->Names()), strain.Name, RecordJSON(strain));
    names.Print(strain);
}

void DeleteStrain(Session& session, const Arguments& given)
{
    const Strain strain = FindStrain(session, given.Name);
    ConfirmDeletion("the strain " + strain.Name, given);
    session.Require(session.Write().DeleteStrain(strain.ID), "the strain could not be deleted",
                    "it still has plants; `plantjournal plant edit PLANT --strain NAME` gives them another");
    ReportChange(session, "Deleted strain " + strain.Name);
}

} // namespace

void AddStrainCommands(CLI::App& program, Session& session)
{
    CLI::App& group = AddGroup(program, "strain", "Strains");

    AddCommand(group, "list", "List all strains", "strain list\nstrain list --json",
               [&session] { ListStrains(session); });

    auto toShow = std::make_shared<Arguments>();
    AddNameArgument(AddCommand(group, "show", "Summarise the plants and harvests of a strain", "strain show Genovese",
                               [&session, toShow] { ShowStrain(session, toShow->Name); }),
                    *toShow);

    auto toAdd = std::make_shared<Request<Strain>>();
    toAdd->Fields.emplace(AddCommand(group, "add", "Add a strain", "strain add Genovese --breeder Riviera",
                                     [&session, toAdd] { AddStrain(session, *toAdd); }),
                          FlagsFor::Add);

    auto toEdit = std::make_shared<Request<Strain>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a strain; a new name also replaces the old one in its plants",
                                "strain edit Genovese --name \"Genovese Gigante\" --flowering-weeks 9",
                                [&session, toEdit] { EditStrain(session, *toEdit); });
    AddNameArgument(edit, toEdit->Given);
    toEdit->Fields.emplace(edit, FlagsFor::Edit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove = AddCommand(group, "delete", "Delete a strain that has no plants", "strain delete Genovese --yes",
                                  [&session, toDelete] { DeleteStrain(session, *toDelete); });
    AddNameArgument(remove, *toDelete);
    AddYes(remove, *toDelete);
}
