#pragma once

#include "contender.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// What is in a journal before it is measured. All of it is made up by rule, so that every journal of one size is the
// same: plants in ten strains, every second one a clone of the one before it, every third one harvested.
struct Seed
{
    int Plants = 0;
    int EventsOfFirstPlant = 0;
    int CareEntries = 0; // 500 for each of the first plants, each with its event
};

// Fills the open, empty journal. Throws std::runtime_error where the contender fails.
void Fill(Contender& contender, const Seed& seed);

// One step of a workload; false where the contender failed.
using Step = std::function<bool()>;

enum class Medium
{
    Memory,
    Disk
};

// Something that a front end does, and how it is measured: `Steps` times in a row, after `Prepare` and before
// `Restore`, which are not measured.
struct Workload
{
    std::string Name;
    int Size = 0; // of what grows, 0 where nothing does
    Seed Holds;
    int Steps = 1;
    // Makes ready what `Steps` steps need, and gives the step.
    std::function<Step(Contender&, const std::string& path)> Prepare;
    // Statements that take back what the steps did, since the next steps are to meet the same journal.
    std::string Restore;
    bool InMemory = true;
    bool OnDisk = true;
    int Rounds = 0; // fewer than usual where one takes long

    std::string Title() const; // "list events, 1,000"
};

const std::vector<Workload>& Workloads();
const Workload& WorkloadTitled(std::string_view title);

// A contender with its journal, as one workload needs it.
class Bout
{
  public:
    // Makes and fills the journal, on disk in `directory`, which must exist. Throws std::runtime_error.
    Bout(const ContenderKind& kind, const Workload& workload, Medium medium, const std::string& directory);

    // Makes ready; what it gives is to be called `Steps` times.
    Step Prepare();
    void Restore();
    Contender& Opened() { return *Keeper; }
    const std::string& Path() const { return JournalPath; }

  private:
    const Workload& Work;
    std::unique_ptr<Contender> Keeper;
    std::string JournalPath;
};
