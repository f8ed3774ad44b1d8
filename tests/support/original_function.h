#pragma once

namespace support
{

// Returns SQLite's function of that name, which this program replaces. Ends the program where SQLite is not a shared
// library, so that nothing could be replaced.
void* OriginalFunction(const char* name);

} // namespace support
