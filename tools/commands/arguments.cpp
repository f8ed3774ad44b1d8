#include "commands/arguments.h"

#include "refusal.h"
#include "terminal/printable.h"
#include "terminal/prompt.h"

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need)
{
    AddArgument(command, "PLANT", "UUID, prefix of the UUID, or name; must match exactly one plant", arguments.Plant,
                need);
}

void AddYes(CLI::App& command, Arguments& arguments)
{
    AddSwitch(command, "-y,--yes", "delete without asking", arguments.Yes);
}

void ConfirmDeletion(const std::string& what, const Arguments& arguments)
{
    if (!arguments.Yes && !Confirm("Delete " + Printable(what) + "?", "--yes"))
        throw Refusal("nothing was deleted");
}
