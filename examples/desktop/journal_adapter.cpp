#include "journal_adapter.h"

namespace
{

// A change by another program shows after this time at most.
constexpr std::chrono::milliseconds PollInterval(250);

} // namespace

JournalAdapter::JournalAdapter()
    : TheWorker({OnWindowThread([this](const std::vector<PlantStatus>& plants) { emit PlantsRead(plants); }),
                 OnWindowThread([this](const PlantView& plant) { emit PlantRead(plant); }),
                 OnWindowThread([this](const std::string& reason) { emit ReadFailed(reason); })},
                PollInterval)
{
}
