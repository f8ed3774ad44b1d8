#include "support/scratch_directory.h"

#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <system_error>

ScratchDirectory::ScratchDirectory()
{
    const std::filesystem::path memory = "/dev/shm";
    const auto parent = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::random_device device;
    do
        Root = parent / ("plantjournal-" + std::to_string(device()));
    while (!std::filesystem::create_directory(Root));
}

ScratchDirectory::~ScratchDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(Root, ignored);
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
