#include "testing/scratch_directory.h"

#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace support
{

ScratchDirectory::ScratchDirectory()
{
    const std::filesystem::path memory = "/dev/shm";
    const auto parent = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::random_device device;
    do
        Root = std::filesystem::absolute(parent) / ("plantjournal-" + std::to_string(device()));
    while (!std::filesystem::create_directory(Root));
}

ScratchDirectory::~ScratchDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(Root, ignored);
}

std::map<std::string, std::string> ScratchDirectory::Files() const
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(Root))
        files[entry.path().filename().string()] = FileBytes(entry.path().string());
    return files;
}

std::string FileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

} // namespace support
