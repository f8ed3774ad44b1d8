#pragma once

#include <string>

// Returns a name in the journal's directory that no file has, for a backup before an `occasion`, such as "update":
// journal.db.before-update-2026-05-01.
std::string BackUpName(const std::string& path, const std::string& occasion);
