#include "query/queries.h"

#include <ostream>

namespace support
{

std::ostream& operator<<(std::ostream& out, const Query& query)
{
    return out << query.Name;
}

const std::vector<Query>& Queries()
{
    static const std::vector<Query> queries = {};
    return queries;
}

} // namespace support
