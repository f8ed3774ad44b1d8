// Runs every input of the fuzzer's corpus, one test for each.

#include "testing/scratch_directory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

std::vector<std::string> Inputs()
{
    std::vector<std::string> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(PLANTJOURNAL_CORPUS))
        inputs.push_back(entry.path().filename().string());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

class CorpusTest : public testing::TestWithParam<std::string>
{
};

TEST_P(CorpusTest, TheInputCausesNoCrash)
{
    const std::string input = FileBytes(std::string(PLANTJOURNAL_CORPUS "/") + GetParam());
    EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(Input, CorpusTest, testing::ValuesIn(Inputs()), [](const auto& test) { return test.param; });

} // namespace
