#include "commands/commands.h"

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/record_flags.h"
#include "journal/session.h"

#include <memory>

namespace
{

void AddNameArgument(CLI::App& command, Arguments& arguments)
{
    AddArgument(command, "NAME", "the strain's name", arguments.Name);
}

void PrintStored(const Session& session, const Strain& strain)
{
    if (session.AsJSON)
        session.Print(JSONOf(strain));
}

void List(Session& session)
{
    std::vector<Strain> strains;
    session.Require(session.Read().ListStrains(strains), "the strains cannot be listed");
    session.Print(strains);
}

void Show(Session& session, const std::string& name)
{
    StrainSummary summary;
    session.Require(session.Read().GetStrainSummary(session.FindStrain(name).ID, summary),
                    "the strain cannot be summed up");
    if (session.AsJSON)
        session.Print(JSONOf(summary));
    else
        PrintTable(std::cout, {{"Field"}, {"Value"}}, LinesOf(summary));
}

void Add(Session& session, const Request<Strain>& request)
{
    PlantRepository& repository = session.Write();
    Strain strain;
    request.Fields->Apply(session, Asked::ToAdd, strain);
    session.Require(repository.CreateStrain(strain), "the strain could not be added");
    PrintStored(session, strain);
}

void Edit(Session& session, const Request<Strain>& request)
{
    if (!request.Fields->Any())
        RefuseUsage("nothing to change was given");
    Strain strain = session.FindStrain(request.Given.Name);
    request.Fields->Apply(session, Asked::ToEdit, strain);
    session.Require(session.Write().UpdateStrain(strain), "the strain could not be changed; another may have the name");
    PrintStored(session, strain);
}

void DeleteStrain(Session& session, const Arguments& given)
{
    const Strain strain = session.FindStrain(given.Name);
    ConfirmDeletion("the strain " + strain.Name, given);
    session.Require(session.Write().DeleteStrain(strain.ID),
                    "the strain could not be deleted; plants that have it are in the way");
}

} // namespace

void AddStrainCommands(CLI::App& program, Session& session)
{
    CLI::App& group = AddGroup(program, "strain", "Strains");

    AddCommand(group, "list", "Show all strains", "strain list\nstrain list --json", [&session] { List(session); });

    auto toShow = std::make_shared<Arguments>();
    AddNameArgument(AddCommand(group, "show", "Sum up a strain's plants and harvests", "strain show Genovese",
                               [&session, toShow] { Show(session, toShow->Name); }),
                    *toShow);

    auto toAdd = std::make_shared<Request<Strain>>();
    toAdd->Fields.emplace(AddCommand(group, "add", "Add a strain", "strain add Genovese --breeder Riviera",
                                     [&session, toAdd] { Add(session, *toAdd); }),
                          Asked::ToAdd);

    auto toEdit = std::make_shared<Request<Strain>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a strain; a new name is carried into its plants",
                                "strain edit Genovese --name \"Genovese Gigante\" --flowering-weeks 9",
                                [&session, toEdit] { Edit(session, *toEdit); });
    AddNameArgument(edit, toEdit->Given);
    toEdit->Fields.emplace(edit, Asked::ToEdit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove = AddCommand(group, "delete", "Delete a strain that no plant has", "strain delete Genovese --yes",
                                  [&session, toDelete] { DeleteStrain(session, *toDelete); });
    AddNameArgument(remove, *toDelete);
    AddYes(remove, *toDelete);
}
