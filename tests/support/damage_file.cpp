#include "support/damage_file.h"

#include "testing/plain_connection.h"

#include <fstream>
#include <ios>

namespace support
{

void WriteBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void Zero(const std::string& path, std::size_t offset, std::size_t size)
{
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset));
    file << std::string(size, '\0');
}

std::vector<UsedPage> UsedPages(const std::string& path)
{
    const PlainConnection journal(path);
    const std::size_t size = std::stoul(journal.Value("PRAGMA page_size;"));
    std::vector<UsedPage> pages;
    for (const Row& row : journal.QueryRows("SELECT pageno,name,pagetype,path,ncell FROM dbstat ORDER BY name,path;"))
    {
        const std::size_t number = std::stoul(row[0]);
        pages.push_back({number, row[1], row[2], row[3], (number - 1) * size, size, std::stoul(row[4])});
    }
    return pages;
}

} // namespace support
