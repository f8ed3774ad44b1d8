// The page size and the encoding of a damaged file.
#pragma once

#include "damaged_file.h"
#include "damaged_pages.h"
#include "page_map.h"

#include <optional>
#include <vector>

namespace plant_file
{

// The format in the file's header if the header agrees with the size of the file and a row of the schema can be read in
// that format, and otherwise the one in which the most rows can be read. std::nullopt where no format gives any row of
// the tables, of which the last is the schema.
std::optional<PageFormat> FindPageFormat(DamagedFile& file, const std::vector<MappedTable>& tables);

} // namespace plant_file
