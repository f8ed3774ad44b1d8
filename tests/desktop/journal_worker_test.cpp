// The journal on a thread of its own: what it reports, and what it does while another connection holds a lock.

#include "journal_worker.h"

#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/scratch_directory.h"

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
    std::vector<PlantStatus> Plants;
    PlantView View;
    std::string Failure;
    int PlantReports = 0;
    int ViewReports = 0;
    int Failures = 0;
};

class JournalWorkerTest : public testing::Test
{
  protected:
    JournalWorkerTest()
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        for (Plant* plant : {&Basil, &Chili})
            EXPECT_TRUE(repository.CreatePlant(*plant));
    }

    void SetUp() override { Worker = Start(); }
    void TearDown() override { Worker.reset(); } // it uses the members below

    std::unique_ptr<JournalWorker> Start()
    {
        JournalEvents events;
        events.PlantsRead = [this](const std::vector<PlantStatus>& plants)
        { Change([&](Reported& now) { now.Plants = plants, ++now.PlantReports; }); };
        events.PlantRead = [this](const PlantView& view)
        { Change([&](Reported& now) { now.View = view, ++now.ViewReports; }); };
        events.ReadFailed = [this](const std::string& reason)
        { Change([&](Reported& now) { now.Failure = reason, ++now.Failures; }); };
        return std::make_unique<JournalWorker>(std::move(events), 5ms);
    }

    // Waits for the result of a function of the worker.
    template <typename Result, typename Call> Result ResultOf(const Call& call)
    {
        const auto promise = std::make_shared<std::promise<Result>>();
        std::future<Result> future = promise->get_future();
        call([promise](const Result& result) { promise->set_value(result); });
        return future.get();
    }

    std::string Open(const std::string& backup = {})
    {
        return ResultOf<std::string>([&](auto then) { Worker->Open(Path, backup, then); });
    }

    StoreResult Store(const FormRecord& record)
    {
        return ResultOf<StoreResult>([&](auto then) { Worker->Store(record, then); });
    }

    void OpenAndShowBasil()
    {
        EXPECT_EQ(Open(), "");
        Worker->Show(Basil.UUID, 400);
        EXPECT_TRUE(Await([&](const Reported& now) { return now.View.Record.UUID == Basil.UUID; }));
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
    std::unique_ptr<JournalWorker> Worker;

  private:
    template <typename Function> void Change(const Function& function)
    {
        {
            const std::lock_guard<std::mutex> lock(Mutex);
            function(State);
        }
        Changed.notify_all();
    }

    std::mutex Mutex;
    std::condition_variable Changed;
    Reported State;
};

TEST_F(JournalWorkerTest, OpeningReportsThePlants)
{
    EXPECT_EQ(Open(), "");
    EXPECT_TRUE(Await([](const Reported& now) { return now.PlantReports == 1; }));
    ASSERT_EQ(Now().Plants.size(), 2);
    EXPECT_EQ(Now().Plants[0].Name, "Basil");
    EXPECT_EQ(Now().Plants[1].Name, "Chili");
    EXPECT_EQ(Now().ViewReports, 0); // no plant was wanted
}

TEST_F(JournalWorkerTest, AShownPlantIsReportedWithAllThatBelongsToIt)
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
    OpenAndShowBasil();
    const PlantView view = Now().View;
    EXPECT_EQ(view.Record, Basil);
    ASSERT_EQ(view.Timeline.size(), 4);
    EXPECT_EQ(view.Timeline[0].Kind, "Health");
    EXPECT_EQ(view.Timeline[1].Kind, "Feed");
    EXPECT_EQ(view.Timeline[2].Kind, "Sown");
    EXPECT_EQ(view.Timeline[3].Kind, "Photo");
    ASSERT_EQ(view.Photos.size(), 1);
    EXPECT_EQ(view.Photos[0].FilePath, "basil.jpg");
    EXPECT_FALSE(view.Harvest);
    ASSERT_EQ(view.Charts.size(), 4);
    for (const PlantChart& chart : view.Charts)
        EXPECT_NE(chart.SVG.find("400"), std::string::npos) << chart.Heading;
}

TEST_F(JournalWorkerTest, AStoredRecordIsReported)
{
    OpenAndShowBasil();
    EXPECT_TRUE(Store(Note("New leaves")).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
    EXPECT_EQ(Now().View.Timeline[0].Text, "New leaves");
}

TEST_F(JournalWorkerTest, AChangeByAnotherConnectionIsReported)
{
    OpenAndShowBasil();
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    PlantJournalEntry note = Note("By another program");
    ASSERT_TRUE(PlantRepository(other).CreatePlantJournalEntry(note));
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
    ASSERT_TRUE(PlantRepository(other).DeletePlant(Chili.UUID));
    EXPECT_TRUE(Await([](const Reported& now) { return now.Plants.size() == 1; }));
}

TEST_F(JournalWorkerTest, NothingIsReportedWithoutAChange)
{
    OpenAndShowBasil();
    const Reported before = Now();
    std::this_thread::sleep_for(100ms); // 20 intervals
    EXPECT_EQ(Now().PlantReports, before.PlantReports);
    EXPECT_EQ(Now().ViewReports, before.ViewReports);
    EXPECT_EQ(Now().Failures, 0);
}

TEST_F(JournalWorkerTest, OnlyTheLastOfSeveralShownPlantsIsRead)
{
    ASSERT_EQ(Open(), "");
    std::promise<void> go;
    const auto running = std::make_shared<std::shared_future<void>>(go.get_future());
    Worker->Store(Note("The first"), [running](const StoreResult&) { running->wait(); });
    for (int round = 0; round < 10; ++round)
    {
        Worker->Show(Chili.UUID, 400);
        Worker->Show(Basil.UUID, 400);
    }
    go.set_value();
    EXPECT_TRUE(Await([](const Reported& now) { return now.ViewReports > 0; }));
    EXPECT_EQ(Now().View.Record.UUID, Basil.UUID);
    EXPECT_LE(Now().ViewReports, 2); // the second for the note
}

TEST_F(JournalWorkerTest, ADeletedPlantIsNotReportedAgain)
{
    OpenAndShowBasil();
    const int views = Now().ViewReports;
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    ASSERT_TRUE(PlantRepository(other).DeletePlant(Basil.UUID));
    EXPECT_TRUE(Await([](const Reported& now) { return now.Plants.size() == 1; }));
    EXPECT_FALSE(Store(Note("Too late")).Stored);
    EXPECT_EQ(Now().ViewReports, views);
    EXPECT_EQ(Now().Failures, 0);
}

TEST_F(JournalWorkerTest, AWriteDuringALockIsRefusedAndStoresNothing)
{
    OpenAndShowBasil();
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

TEST_F(JournalWorkerTest, AChangeDuringALockIsReportedAfterIt)
{
    OpenAndShowBasil();
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE; UPDATE Plants SET Name='Thyme' WHERE Name='Chili'");
    Worker->Show(Chili.UUID, 400); // cannot be read now
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failure.find("locked") != std::string::npos; }));
    EXPECT_EQ(Now().View.Record.Name, "Basil");
    other.RunSQL("COMMIT");
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Record.Name == "Thyme"; }));
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failure.empty(); }));
    EXPECT_EQ(Now().Failures, 2);
}

TEST_F(JournalWorkerTest, APlantShownDuringALockIsReportedAfterIt)
{
    OpenAndShowBasil();
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE");
    Worker->Show(Chili.UUID, 400);
    EXPECT_TRUE(Await([](const Reported& now) { return now.Failures == 1; }));
    other.RunSQL("ROLLBACK"); // changes nothing, so only the failed read is a reason to read again
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Record.Name == "Chili"; }));
}

TEST_F(JournalWorkerTest, AnImpossibleValueIsNotStored)
{
    OpenAndShowBasil();
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

TEST_F(JournalWorkerTest, AnUnlikelyValueIsStored)
{
    OpenAndShowBasil();
    PlantCareEntry feeding;
    feeding.PlantUUID = Basil.UUID;
    feeding.CareDate = "2025-03-01"; // before the plant was sown
    EXPECT_TRUE(Store(feeding).Stored);
}

TEST_F(JournalWorkerTest, AHarvestIsStoredOnceAndThenCorrected)
{
    OpenAndShowBasil();
    HarvestRecord record;
    record.PlantUUID = Basil.UUID;
    record.HarvestDate = "2025-07-01";
    record.WetWeightG = 310;
    EXPECT_TRUE(Store(record).Stored);
    ASSERT_TRUE(Await([](const Reported& now) { return now.View.Harvest.has_value(); }));
    EXPECT_EQ(Now().View.Record.Stage, PlantStage::Harvested);

    EXPECT_FALSE(Store(record).Stored); // a second one
    HarvestRecord dried = *Now().View.Harvest;
    // Its event is deleted after the form was filled in.
    PlainConnection(Path).RunSQL("PRAGMA foreign_keys=ON; DELETE FROM PlantEvents");
    dried.DryWeightG = 52;
    EXPECT_TRUE(Store(dried).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Harvest->DryWeightG == 52; }));
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM HarvestRecords"), "1");
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM PlantEvents WHERE EventType='Harvest'"), "1");
}

TEST_F(JournalWorkerTest, ACorrectedHarvestThatWasDeletedIsStoredAgain)
{
    OpenAndShowBasil();
    HarvestRecord record;
    record.PlantUUID = Basil.UUID;
    record.HarvestDate = "2025-07-01";
    ASSERT_TRUE(Store(record).Stored);
    ASSERT_TRUE(Await([](const Reported& now) { return now.View.Harvest.has_value(); }));
    HarvestRecord dried = *Now().View.Harvest;
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    ASSERT_TRUE(PlantRepository(other).DeleteHarvestRecord(Basil.UUID)); // an update would store nothing now
    dried.DryWeightG = 52;
    EXPECT_TRUE(Store(dried).Stored);
    EXPECT_EQ(PlainConnection(Path).Value("SELECT DryWeightG FROM HarvestRecords"), "52.0");
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM PlantEvents"), "1");
}

TEST_F(JournalWorkerTest, AHealthObservationIsStored)
{
    OpenAndShowBasil();
    PlantHealthObservation observation;
    observation.PlantUUID = Basil.UUID;
    observation.ObservationDate = "2025-05-03";
    observation.Issue = "Aphids";
    EXPECT_TRUE(Store(observation).Stored);
    EXPECT_TRUE(Await([](const Reported& now) { return now.View.Timeline.size() == 2; }));
}

TEST_F(JournalWorkerTest, TheDestructorStoresTheWaitingRecords)
{
    ASSERT_EQ(Open(), "");
    for (const char* text : {"a", "b", "c"})
        Worker->Store(Note(text), [](const StoreResult&) {});
    Worker.reset();
    EXPECT_EQ(StoredNotes(), "a,b,c");
}

TEST_F(JournalWorkerTest, OpeningStoresTheBackupBeforeItMigrates)
{
    const OldFile& oldest = OldFiles().front();
    WriteOldFile(Path, oldest);
    const std::string before = Content(PlainConnection(Path).NativeHandle());
    const std::string backup = Scratch.File("backup.db");
    EXPECT_EQ(Open(backup), "");
    EXPECT_EQ(Content(PlainConnection(backup).NativeHandle()), before);
    EXPECT_NE(Content(PlainConnection(Path).NativeHandle()), before);
}

TEST_F(JournalWorkerTest, WithoutItsBackupAFileIsNotOpened)
{
    WriteOldFile(Path, OldFiles().front());
    const std::string before = Content(PlainConnection(Path).NativeHandle());
    const std::string error = Open(Scratch.File("no/directory/backup.db"));
    EXPECT_NE(error.find("backup.db"), std::string::npos) << error;
    EXPECT_EQ(Content(PlainConnection(Path).NativeHandle()), before);
    EXPECT_EQ(Now().PlantReports, 0);
}

TEST_F(JournalWorkerTest, AFileThatCannotBeOpenedGivesTheReason)
{
    Path = Scratch.File("");
    EXPECT_NE(Open(), "");
}

TEST_F(JournalWorkerTest, InspectReturnsTheKindOfTheFile)
{
    std::promise<PlantFileKind> kind;
    Worker->Inspect(Path,
                    [&](const PlantFileResult& result, const PlantFileInspection& inspection)
                    {
                        EXPECT_TRUE(result);
                        kind.set_value(inspection.Kind);
                    });
    EXPECT_EQ(kind.get_future().get(), PlantFileKind::Current);
}

TEST_F(JournalWorkerTest, CheckReturnsTheFindings)
{
    PlainConnection(Path).RunSQL(
        "UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE Name='Basil') WHERE Name='Basil'");
    ASSERT_EQ(Open(), "");
    std::promise<std::vector<PlantFileFinding>> findings;
    Worker->Check(
        [&](const PlantFileResult& result, const std::vector<PlantFileFinding>& found)
        {
            EXPECT_TRUE(result);
            findings.set_value(found);
        });
    EXPECT_EQ(findings.get_future().get().size(), 1);
}

TEST_F(JournalWorkerTest, BackUpCopiesTheOpenJournalAndReplacesNoFile)
{
    ASSERT_EQ(Open(), "");
    const auto backUp = [&]
    { return ResultOf<PlantFileResult>([&](auto then) { Worker->BackUp(Scratch.File("copy.db"), then); }).Error; };
    EXPECT_EQ(backUp(), "");
    EXPECT_EQ(Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()),
              Content(PlainConnection(Path).NativeHandle()));
    EXPECT_NE(backUp(), "");
}

} // namespace
