// The conversion of events that versions with fewer event types wrote.
#pragma once

#include <string>

namespace plant_file
{

// Whether a migration rebuilds an event table with this definition. Several types are searched, so that a single
// damaged byte does not make a table an old one.
bool IsDefinitionOfOldEvents(const std::string& definition);

// Changes a row as the migration does.
void ConvertOldEvent(std::string& type, std::string& details);

} // namespace plant_file
