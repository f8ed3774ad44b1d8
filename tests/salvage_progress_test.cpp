// The progress of a salvage, and its interruption.

#include "plant_file.h"

#include "support/salvage_test.h"

#include <cstdint>
#include <filesystem>
#include <stdexcept>

using namespace support;

namespace
{

class SalvageProgressTest : public SalvageTest
{
  protected:
    SalvageProgressTest() { Grow(); }

    std::string SalvageWith(const PlantBackUpProgress& progress) const
    {
        PlantSalvageReport report;
        const std::string error = SalvagePlantDatabase(Path, Destination, report, progress).Error;
        EXPECT_EQ(report.Tables.empty(), !error.empty());
        return error;
    }
    // Interrupts the salvage at each call in turn, up to the `most`th. No call may leave a file. Returns the errors
    // that were different.
    std::vector<std::string> ErrorsOfInterruptions(int most) const
    {
        const auto before = Scratch.Files();
        std::vector<std::string> errors;
        for (int last = 0; last < most; last += 1 + last / 10)
        {
            int calls = 0;
            const std::string error = SalvageWith([&](std::int64_t, std::int64_t) { return calls++ < last; });
            if (error.empty())
                break;
            EXPECT_TRUE(Scratch.Files() == before) << last;
            if (errors.empty() || errors.back() != error)
                errors.push_back(error);
        }
        return errors;
    }
};

TEST_F(SalvageProgressTest, ProgressIsReportedUpToTheLastPage)
{
    const auto pages = static_cast<std::int64_t>(std::filesystem::file_size(Path) / 512);
    std::int64_t before = 0;
    std::int64_t different = 1;
    const auto check = [&](std::int64_t done, std::int64_t total)
    {
        EXPECT_EQ(total, pages);
        EXPECT_GE(done, before);
        different += done != before ? 1 : 0;
        before = done;
        return true;
    };
    EXPECT_EQ(SalvageWith(check), "");
    EXPECT_EQ(before, pages);
    EXPECT_GT(different, pages / 3);
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path));
}

TEST_F(SalvageProgressTest, AnInterruptionWhileItReadsLeavesNoFile)
{
    EXPECT_EQ(ErrorsOfInterruptions(100'000),
              (std::vector<std::string>{Path + ": reading the damaged file: interrupted",
                                        Destination + ": reading the damaged file: interrupted"}));
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path)); // at the end, no call was left
}

TEST_F(SalvageProgressTest, AnInterruptionAfterTheLastPageLeavesNoFile)
{
    constexpr int afterReading = 3; // calls
    int calls = 0;
    EXPECT_EQ(SalvageWith(
                  [&](std::int64_t, std::int64_t)
                  {
                      ++calls;
                      return true;
                  }),
              "");
    std::filesystem::remove(Destination);
    const auto before = Scratch.Files();
    for (int last = calls - afterReading; last < calls; ++last)
    {
        int made = 0;
        EXPECT_EQ(SalvageWith([&](std::int64_t, std::int64_t) { return made++ < last; }),
                  Destination + ": writing the new journal: interrupted");
        EXPECT_TRUE(Scratch.Files() == before);
    }
}

TEST_F(SalvageProgressTest, TheSearchForTheLostPageSizeIsInterrupted)
{
    Zero(Path, 0, 100);
    EXPECT_EQ(ErrorsOfInterruptions(1000), std::vector<std::string>{Path + ": reading the damaged file: interrupted"});
}

TEST_F(SalvageProgressTest, AnExceptionOfTheCallbackLeavesNoFile)
{
    const auto before = Scratch.Files();
    const auto fail = [](std::int64_t done, std::int64_t)
    {
        if (done != 0)
            throw std::runtime_error("tired");
        return true;
    };
    EXPECT_THROW(SalvageWith(fail), std::runtime_error);
    EXPECT_TRUE(Scratch.Files() == before);
    EXPECT_EQ(SalvageWith({}), ""); // no lock is left
}

} // namespace
