#pragma once

#include "transfer/source.h"

// Reads an export in JSON. Adds a message to `problems` for each part that cannot be read.
void ReadJSONSource(const SourcePointer& file, RawRowReceiver& receiver, Problems& problems);
