#include "testing/old_files.h"

#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

namespace support
{

std::ostream& operator<<(std::ostream& out, const OldFile& file)
{
    return out << file.Name;
}

const std::vector<OldFile>& OldFiles()
{
    static const std::vector<OldFile> files = []
    {
        std::vector<OldFile> read;
        for (const auto& entry : std::filesystem::directory_iterator(PLANTJOURNAL_SOURCE_DIR "/testing/old_files"))
            read.push_back({entry.path().stem().string(), FileBytes(entry.path().string())});
        std::sort(read.begin(), read.end(), [](const OldFile& a, const OldFile& b) { return a.Name < b.Name; });
        return read;
    }();
    return files;
}

bool HasCurrentSchema(const OldFile& file)
{
    return file.Name == "12_grown_to_the_end" || file.Name == "13_current";
}

void WriteOldFile(const std::string& path, const OldFile& file)
{
    std::filesystem::remove(path);
    const PlainConnection connection(path);
    connection.RunSQL("BEGIN;" + file.SQL + "COMMIT;");
}

} // namespace support
