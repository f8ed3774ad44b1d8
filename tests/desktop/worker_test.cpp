// The worker of the window: what it reports, and what it does while another connection holds a lock.

#include "worker.h"

#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/scratch_directory.h"

#include <atomic>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using namespace std::chrono_literals;

// What the worker has reported. The worker writes it, the test reads it.
struct Reported
{
    JournalView View; // the last one without an error
    std::string Failure;
    int Views = 0;
    int Failures = 0;
};

class WorkerTest : public testing::Test
{
  protected:
    WorkerTest()
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        for (Plant* plant : {&Basil, &Chili})
            EXPECT_TRUE(repository.CreatePlant(*plant));
    }

    void SetUp() override
    {
        TheWorker = std::make_unique<Worker>(
            Run, [this](const auto& view) { Take(view); }, 5ms);
    }
    void TearDown() override { TheWorker.reset(); } // it uses the members below

    // The tests have no event loop, so the calls to the window run on the worker's thread.
    static void Run(const Worker::Call& call) { call(); }

    void Take(const JournalView& view)
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        State.Failure = view.Error;
        if (view.Error.empty())
            State.View = view;
        ++(view.Error.empty() ? State.Views : State.Failures);
        Changed.notify_all();
    }

    // Runs the job on the worker's thread and waits for its result.
    template <typename Job> auto ResultOf(const Job& job)
    {
        using Result = std::invoke_result_t<Job, PlantDatabase&>;
        const auto promise = std::make_shared<std::promise<Result>>();
        std::future<Result> future = promise->get_future();
        TheWorker->Do(job, [promise](const Result& result) { promise->set_value(result); });
        return future.get();
    }

    std::string Open(const std::string& backup = {})
    {
        std::promise<std::string> error;
        TheWorker->Open(Path, backup, [&](const std::string& result) { error.set_value(result); });
        return error.get_future().get();
    }

    StoreResult Store(const FormRecord& record)
    {
        return ResultOf([record](PlantDatabase& database) { return StoreRecord(database, record); });
    }

    void OpenAndSelectBasil()
    {
        EXPECT_EQ(Open(), "");
        TheWorker->Select(Basil.UUID);
        EXPECT_TRUE(Await([&](const Reported& now) { return now.View.Selected.UUID == Basil.UUID; }));
    }

    template <typename Condition> bool Await(const Condition& condition)
    {
        std::unique_lock<std::mutex> lock(Mutex);
        return Changed.wait_for(lock, 20s, [&] { return condition(State); });
    }

    Reported Now()
    {
        const std::lock_guard<std::mutex> lock(Mutex);
        return State;
    }

    static Plant Named(const std::string& name)
    {
        Plant plant;
        plant.Name = name;
        plant.Strain = "Herbs";
        plant.SeedDate = "2025-04-01";
        return plant;
    }

    PlantJournalEntry Note(const std::string& text) const
    {
        PlantJournalEntry entry;
        entry.PlantUUID = Basil.UUID;
        entry.EntryDate = "2025-05-01";
        entry.Details = text;
        return entry;
    }

    // The texts of the notes in the file.
    std::string StoredNotes() const
    {
        return PlainConnection(Path).Value("SELECT COALESCE(group_concat(Details),'') FROM PlantJournalEntries");
    }

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
    Plant Basil = Named("Basil");
    Plant Chili = Named("Chili");
    std::unique_ptr<Worker> TheWorker;

  private:
    std::mutex Mutex;
    std::condition_variable Changed;
    Reported State;
};

TEST_F(WorkerTest, OpeningReportsThePlants)
{
    EXPECT_EQ(Open(), "");
    EXPECT_TRUE(Await([](const Reported& now) { return now.Views == 1; }));
    ASSERT_EQ(Now().View.Plants.size(), 2);
    EXPECT_EQ(Now().View.Plants[0].Name, "Basil");
    EXPECT_EQ(Now().View.Plants[1].Name, "Chili");
    EXPECT_EQ(Now().View.Selected.UUID, ""); // no plant was selected
}

TEST_F(WorkerTest, ASelectedPlantIsReportedWithItsRecords)
{
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        PlantCareEntry feeding;
        feeding.PlantUUID = Basil.UUID;
        feeding.CareDate = "2025-05-02";
        feeding.Action = PlantCareAction::Feed;
        feeding.AmountMl = 500;
        feeding.EC = 1.8;
        ASSERT_TRUE(repository.CreatePlantCareEntry(feeding));
        PlantPhoto photo;
        photo.PlantUUID = Basil.UUID;
        photo.FilePath = "basil.jpg";
        ASSERT_TRUE(repository.CreatePlantPhoto(photo));
        PlantHealthObservation observation;
        observation.PlantUUID = Basil.UUID;
        observation.ObservationDate = "2025-05-03";
        observation.Issue = "Aphids";
        ASSERT_TRUE(repository.CreatePlantHealthObservation(observation));
    }
    OpenAndSelectBasil();
    const JournalView view = Now().View;
    EXPECT_EQ(view.Selected, Basil);
    ASSERT_EQ(view.Timeline.size(), 4);
    EXPECT_EQ(view.Timeline[0].Kind, "Health");
    EXPECT_EQ(view.Timeline[1].Kind, "Feed");
    EXPECT_EQ(view.Timeline[2].Kind, "Sown");
    EXPECT_EQ(view.Timeline[3].Kind, "Photo");
    ASSERT_EQ(view.Photos.size(), 1);
    EXPECT_EQ(view.Photos[0].FilePath, "basil.jpg");
    ASSERT_EQ(view.Charts.size(), 4);
    for (const PlantChart& chart : view.Charts)
        EXPECT_NE(chart.SVG.find("480"), std::string::npos) << chart.Heading;
}

TEST_F(WorkerTest, AStoredRecordIsReported)
{
    OpenAndSelectBasil();
    EXPECT_TRUE(Store(Note("New leaves")).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
    EXPECT_EQ(Now().View.Timeline[0].Text, "New leaves");
}

TEST_F(WorkerTest, AChangeByAnotherConnectionIsReported)
{
    OpenAndSelectBasil();
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    PlantJournalEntry note = Note("By another program");
    ASSERT_TRUE(PlantRepository(other).CreatePlantJournalEntry(note));
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
    ASSERT_TRUE(PlantRepository(other).DeletePlant(Chili.UUID));
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Plants.size() == 1; }));
}

TEST_F(WorkerTest, NothingIsReportedWithoutAChange)
{
    OpenAndSelectBasil();
    const Reported before = Now();
    std::this_thread::sleep_for(100ms); // 20 intervals
    EXPECT_EQ(Now().Views, before.Views);
    EXPECT_EQ(Now().Failures, 0);
}

TEST_F(WorkerTest, OnlyTheLastOfSeveralSelectedPlantsIsRead)
{
    ASSERT_EQ(Open(), "");
    ASSERT_TRUE(Await([](const Reported& now) { return now.Views == 1; }));
    const auto go = std::make_shared<std::promise<void>>();
    TheWorker->Do(
        [go](PlantDatabase&)
        {
            go->get_future().wait();
            return 0;
        },
        [](int) {});
    for (int round = 0; round < 10; ++round)
    {
        TheWorker->Select(Chili.UUID);
        TheWorker->Select(Basil.UUID);
    }
    go->set_value();
    EXPECT_TRUE(Await([](const Reported& now) { return now.Views > 1; }));
    EXPECT_EQ(Now().View.Selected.UUID, Basil.UUID);
    EXPECT_EQ(Now().Views, 2);
}

TEST_F(WorkerTest, ADeletedPlantIsNotReportedAgain)
{
    OpenAndSelectBasil();
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    ASSERT_TRUE(PlantRepository(other).DeletePlant(Basil.UUID));
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Plants.size() == 1; }));
    EXPECT_FALSE(Store(Note("Too late")).Stored);
    EXPECT_EQ(Now().View.Selected.UUID, "");
    EXPECT_EQ(Now().Failures, 0);
}

TEST_F(WorkerTest, AWriteDuringALockIsRefusedAndStoresNothing)
{
    OpenAndSelectBasil();
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE");
    const StoreResult refused = Store(Note("Once"));
    EXPECT_FALSE(refused.Stored);
    EXPECT_TRUE(refused.Problems.empty());
    EXPECT_NE(refused.Reason.find("locked"), std::string::npos) << refused.Reason;
    other.RunSQL("ROLLBACK");
    EXPECT_EQ(StoredNotes(), "");
    EXPECT_TRUE(Store(Note("Once")).Stored);
    EXPECT_EQ(StoredNotes(), "Once");
}

TEST_F(WorkerTest, AChangeDuringALockIsReportedAfterIt)
{
    OpenAndSelectBasil();
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE; UPDATE Plants SET Name='Thyme' WHERE Name='Chili'");
    TheWorker->Select(Chili.UUID); // cannot be read now
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failure.find("locked") != std::string::npos; }));
    EXPECT_EQ(Now().View.Selected.Name, "Basil");
    other.RunSQL("COMMIT");
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Selected.Name == "Thyme"; }));
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failure.empty(); }));
}

TEST_F(WorkerTest, APlantShownDuringALockIsReportedAfterIt)
{
    OpenAndSelectBasil();
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE");
    TheWorker->Select(Chili.UUID);
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failures > 0; }));
    other.RunSQL("ROLLBACK"); // changes nothing, so only the failed read is a reason to read again
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Selected.Name == "Chili"; }));
}

TEST_F(WorkerTest, AnImpossibleValueIsNotStored)
{
    OpenAndSelectBasil();
    PlantCareEntry feeding;
    feeding.PlantUUID = Basil.UUID;
    feeding.CareDate = "2025-05-02";
    feeding.PH = 15;
    const StoreResult refused = Store(feeding);
    EXPECT_FALSE(refused.Stored);
    ASSERT_EQ(refused.Problems.size(), 1);
    EXPECT_EQ(refused.Problems[0].Field, "PH");
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM PlantCareEntries"), "0");
}

TEST_F(WorkerTest, AnUnlikelyValueIsStored)
{
    OpenAndSelectBasil();
    PlantCareEntry feeding;
    feeding.PlantUUID = Basil.UUID;
    feeding.CareDate = "2025-03-01"; // before the plant was sown
    EXPECT_TRUE(Store(feeding).Stored);
}

TEST_F(WorkerTest, AHarvestIsStoredOnce)
{
    OpenAndSelectBasil();
    HarvestRecord record;
    record.PlantUUID = Basil.UUID;
    record.HarvestDate = "2025-07-01";
    record.WetWeightG = 310;
    EXPECT_TRUE(Store(record).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Selected.Stage == PlantStage::Harvested; }));
    record.WetWeightG = 320;
    const StoreResult second = Store(record);
    EXPECT_FALSE(second.Stored);
    ASSERT_EQ(second.Problems.size(), 1);
    EXPECT_EQ(second.Problems[0].Kind, PlantProblemKind::Refused);
    EXPECT_EQ(PlainConnection(Path).Value("SELECT group_concat(WetWeightG) FROM HarvestRecords"), "310.0");
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM PlantEvents WHERE EventType='Harvest'"), "1");
}

TEST_F(WorkerTest, AHealthObservationIsStored)
{
    OpenAndSelectBasil();
    PlantHealthObservation observation;
    observation.PlantUUID = Basil.UUID;
    observation.ObservationDate = "2025-05-03";
    observation.Issue = "Aphids";
    EXPECT_TRUE(Store(observation).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
}

TEST_F(WorkerTest, TheDestructorStoresTheWaitingRecords)
{
    ASSERT_EQ(Open(), "");
    for (const char* text : {"a", "b", "c"})
        TheWorker->Do([note = Note(text)](PlantDatabase& database) { return StoreRecord(database, note).Stored; },
                      [](bool stored) { EXPECT_TRUE(stored); });
    TheWorker.reset();
    EXPECT_EQ(StoredNotes(), "a,b,c");
}

TEST_F(WorkerTest, OpeningStoresTheBackupBeforeItMigrates)
{
    const OldFile& oldest = OldFiles().front();
    WriteOldFile(Path, oldest);
    const std::string before = Content(PlainConnection(Path).NativeHandle());
    const std::string backup = Scratch.File("backup.db");
    EXPECT_EQ(Open(backup), "");
    EXPECT_EQ(Content(PlainConnection(backup).NativeHandle()), before);
    EXPECT_NE(Content(PlainConnection(Path).NativeHandle()), before);
}

TEST_F(WorkerTest, WithoutItsBackupAFileIsNotOpened)
{
    WriteOldFile(Path, OldFiles().front());
    const std::string before = Content(PlainConnection(Path).NativeHandle());
    const std::string error = Open(Scratch.File("no/directory/backup.db"));
    EXPECT_NE(error.find("backup.db"), std::string::npos) << error;
    EXPECT_EQ(Content(PlainConnection(Path).NativeHandle()), before);
    EXPECT_EQ(Now().Views, 0);
}

TEST_F(WorkerTest, AFileThatCannotBeOpenedLeavesTheOpenOneOpen)
{
    OpenAndSelectBasil();
    const std::string journal = std::exchange(Path, Scratch.File(""));
    EXPECT_NE(Open(), "");
    Path = journal;
    EXPECT_TRUE(Store(Note("Still open")).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
}

TEST_F(WorkerTest, AnOpenedCopyIsReportedWithTheSelectedPlant)
{
    OpenAndSelectBasil();
    ASSERT_TRUE(Store(Note("In both")).Stored);
    const std::string copy = Scratch.File("copy.db");
    std::filesystem::copy_file(Path, copy);
    ASSERT_TRUE(Store(Note("Only in the first")).Stored);
    ASSERT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 3; }));
    Path = copy;
    EXPECT_EQ(Open(), "");
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
}

// The queue of jobs.

TEST_F(WorkerTest, JobsRunInTheOrderOfTheCallsOnOneOtherThread)
{
    std::vector<int> run;
    std::vector<std::thread::id> threads;
    for (int job = 0; job < 100; ++job)
        TheWorker->Do(
            [&, job](PlantDatabase&)
            {
                run.push_back(job);
                return std::this_thread::get_id();
            },
            [&](std::thread::id thread) { threads.push_back(thread); });
    TheWorker.reset(); // completes the jobs
    ASSERT_EQ(run.size(), 100);
    for (int job = 0; job < 100; ++job)
        EXPECT_EQ(run[static_cast<std::size_t>(job)], job);
    ASSERT_EQ(threads.size(), 100);
    for (const std::thread::id& thread : threads)
    {
        EXPECT_EQ(thread, threads.front());
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

TEST_F(WorkerTest, DoDoesNotWaitForTheRunningJob)
{
    std::promise<void> end;
    std::atomic<bool> ended = false;
    TheWorker->Do(
        [&](PlantDatabase&)
        {
            end.get_future().wait();
            return true;
        },
        [&](bool result) { ended = result; });
    TheWorker->Do([](PlantDatabase&) { return 0; }, [](int) {});
    EXPECT_FALSE(ended);
    end.set_value();
    TheWorker.reset();
    EXPECT_TRUE(ended);
}

TEST_F(WorkerTest, JobsMayComeFromSeveralThreads)
{
    int run = 0; // only the jobs use it
    std::vector<std::future<void>> callers;
    for (int caller = 0; caller < 4; ++caller)
        callers.push_back(std::async(std::launch::async,
                                     [&]
                                     {
                                         for (int job = 0; job < 250; ++job)
                                             TheWorker->Do([&run](PlantDatabase&) { return ++run; }, [](int) {});
                                     }));
    for (std::future<void>& caller : callers)
        caller.get();
    TheWorker.reset();
    EXPECT_EQ(run, 1000);
}

TEST_F(WorkerTest, AWorkerWithoutJobsEndsAtOnce)
{
    const auto begin = std::chrono::steady_clock::now();
    std::make_unique<Worker>(
        Run, [](const JournalView&) {}, std::chrono::hours(1))
        .reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST_F(WorkerTest, AStoredRecordIsReportedWithoutWaitingForTheInterval)
{
    std::promise<void> reported;
    Worker slow(
        Run,
        [&](const JournalView& view)
        {
            if (view.Timeline.size() == 2)
                reported.set_value();
        },
        std::chrono::hours(1));
    slow.Open(Path, {}, [](const std::string&) {});
    slow.Select(Basil.UUID);
    slow.Do([note = Note("New leaves")](PlantDatabase& database) { return StoreRecord(database, note).Stored; },
            [](bool stored) { EXPECT_TRUE(stored); });
    EXPECT_EQ(reported.get_future().wait_for(10s), std::future_status::ready);
}

} // namespace
