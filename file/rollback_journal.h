// The rollback journal of an interrupted write, read as SQLite would apply it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <unordered_map>

namespace plant_file
{

struct RollbackJournal
{
    std::size_t PageSize = 0; // 0 where nothing is rolled back
    std::int64_t PageCount = 0;
    bool IsDamaged = false; // whether a write was interrupted that is not, or not wholly, rolled back
    std::unordered_map<std::uint32_t, std::int64_t> Pages; // by page number: where the journal has its former bytes
};

// Format: https://www.sqlite.org/fileformat2.html#the_rollback_journal
RollbackJournal ReadRollbackJournal(const std::filesystem::path& file);

} // namespace plant_file
