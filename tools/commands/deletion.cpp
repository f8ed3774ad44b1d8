#include "commands/deletion.h"

#include "refusal.h"
#include "terminal/printable.h"
#include "terminal/prompt.h"

void AddYes(CLI::App& command, Arguments& arguments)
{
    AddSwitch(command, "-y,--yes", "delete without asking", arguments.Yes);
}

void ConfirmDeletion(const std::string& what, const Arguments& arguments)
{
    if (!arguments.Yes && !Confirm("Delete " + Printable(what) + "?", "--yes"))
        throw Refusal("nothing was deleted; answer y, or pass --yes");
}
