#include "commands/arguments.h"

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need)
{
    AddArgument(command, "PLANT", "UUID, prefix of the UUID, or name; must match exactly one plant", arguments.Plant,
                need);
}
