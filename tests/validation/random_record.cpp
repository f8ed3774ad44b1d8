#include "validation/random_record.h"

#include "query/random_journal.h"

namespace support
{

std::string RandomRecords::PlantUUID()
{
    switch (Random() % 16)
    {
    case 0:
        return {};
    case 1:
        return std::string("zero\0x", 6); // a stored text that continues after a zero byte
    default:
        return RandomUUIDs().at(static_cast<std::size_t>(Random() % RandomUUIDs().size()));
    }
}

} // namespace support
