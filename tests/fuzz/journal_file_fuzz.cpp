// A journal file with changed bytes, and every operation on it. An operation on a damaged file may return anything, but
// must not crash, leak or leave anything open.

#include "plant_database.h"
#include "plant_file.h"
#include "support/repository_operations.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

void Require(bool holds, const char* what)
{
    if (holds)
        return;
    std::cerr << what << '\n';
    std::abort();
}

// ---- The files

// An undamaged file, and a file with half of a transaction and its rollback journal.
struct BaseFile
{
    std::string Whole;
    std::string Torn;
    std::string Journal;
};

// The smallest pages of SQLite, so that a changed byte is likely to have an effect.
BaseFile ReadBaseFile(const std::string& path)
{
    const PlainConnection file(path);
    file.RunSQL("PRAGMA page_size=512; VACUUM;");
    BaseFile base;
    base.Whole = FileBytes(path);
    file.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.4000c','x'); DELETE FROM PlantEvents;");
    base.Torn = FileBytes(path);
    base.Journal = FileBytes(path + "-journal");
    Require(base.Torn != base.Whole && base.Journal.starts_with('\xd9'), "the torn file is not torn");
    return base;
}

// The sample records in the current schema, then every earlier schema.
std::vector<BaseFile> ReadBaseFiles()
{
    std::vector<BaseFile> files;
    const ScratchDirectory scratch;
    {
        PlantDatabase database;
        Require(database.Open(scratch.File("sample.db")), "the sample records could not be stored");
        PlantRepository repository(database);
        StoreSampleRecords(repository);
    }
    files.push_back(ReadBaseFile(scratch.File("sample.db")));
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(scratch.File(old.Name), old);
        files.push_back(ReadBaseFile(scratch.File(old.Name)));
    }
    return files;
}

// Reads the bytes of an input in their order. After the end, numbers are 0 and texts are empty.
class Input
{
  public:
    Input(const std::uint8_t* data, std::size_t size) : Left(reinterpret_cast<const char*>(data), size) {}

    bool IsEmpty() const { return Left.empty(); }

    std::string_view Bytes(std::size_t count)
    {
        const std::string_view bytes = Left.substr(0, count);
        Left.remove_prefix(bytes.size());
        return bytes;
    }

    unsigned Byte()
    {
        const std::string_view byte = Bytes(1);
        return byte.empty() ? 0 : static_cast<unsigned char>(byte.front());
    }

    std::size_t Size() // the lower byte first
    {
        const std::size_t low = Byte();
        return low + (std::size_t{Byte()} << 8U);
    }

  private:
    std::string_view Left;
};

// An input's first byte chooses the base file, or WholeFile; the second says whether it is torn, whether it is cut
// short and at which size. Patches follow, each as its place, its length and its bytes, in the file. If the length
// has its highest bit set, the patch is in the rollback journal instead. After WholeFile, the bytes of the file follow.
// If the file is torn, their number comes first, and the bytes of the rollback journal come last.
//
// The inputs in corpus/journal_file/ were written by hand, each named after what it damages: the places of their
// patches were looked up in the base files (https://www.sqlite.org/fileformat.html), the whole files built with SQLite.
constexpr unsigned WholeFile = 255;
constexpr unsigned Torn = 1;
constexpr unsigned Cut = 2;
constexpr unsigned InJournal = 128;

void Write(const std::string& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void WriteFiles(const std::string& path, Input input)
{
    static const std::vector<BaseFile> bases = ReadBaseFiles();
    for (const char* const suffix : {"-journal", "-wal", "-shm"})
        std::filesystem::remove(path + suffix);
    const unsigned number = input.Byte();
    const unsigned flags = input.Byte();
    if (number == WholeFile)
    {
        Write(path, input.Bytes((flags & Torn) != 0 ? input.Size() : std::string_view::npos));
        if ((flags & Torn) != 0)
            Write(path + "-journal", input.Bytes(std::string_view::npos));
        return;
    }
    const BaseFile& base = bases[number % bases.size()];
    std::string file = (flags & Torn) != 0 ? base.Torn : base.Whole;
    std::string journal = base.Journal;
    if ((flags & Cut) != 0)
        file.resize(std::min(file.size(), input.Size()));
    while (!input.IsEmpty())
    {
        const std::size_t place = input.Size();
        const unsigned length = input.Byte();
        std::string& patched = (length & InJournal) != 0 ? journal : file;
        const std::string_view patch = input.Bytes(length % InJournal);
        if (place < patched.size())
            patched.replace(place, std::min(patch.size(), patched.size() - place), patch);
    }
    Write(path, file);
    if ((flags & Torn) != 0)
        Write(path + "-journal", journal);
}

// ---- What is done with them

// The fuzzer does not see the branches of SQLite, which is not instrumented. It uses these counters, the results of
// SQLite after each call, in addition to its own.
[[gnu::section("__libfuzzer_extra_counters")]] std::uint8_t outcomes[64 * 64];

// Makes a call and requires that nothing is open after it.
template <typename Work> void Call(sqlite3* db, std::size_t number, const Work& work)
{
    const bool done = work();
    const auto code = static_cast<std::size_t>(sqlite3_errcode(db)) % 32;
    outcomes[number % 64 * 64 + code * 2 + (done ? 1 : 0)] = 1;
    Require(sqlite3_next_stmt(db, nullptr) == nullptr, "a statement was left open");
    Require(sqlite3_get_autocommit(db) != 0, "a transaction was left open");
}

// Reads all records, of at most 8 plants, and returns some of them for the operations.
SampleRecords ReadRecords(sqlite3* db, PlantRepository& repository)
{
    SampleRecords sample;
    std::vector<Plant> plants;
    Call(db, 0, [&] { return repository.ListPlants(plants); });
    plants.resize(std::min<std::size_t>(plants.size(), 8));
    for (const Plant& plant : plants)
    {
        const auto list = [&](std::size_t number, auto operation, auto& first, auto& last)
        {
            std::vector<std::decay_t<decltype(first)>> records;
            Call(db, number, [&] { return (repository.*operation)(plant.UUID, records); });
            if (records.empty())
                return;
            first = records.front();
            last = records.back();
        };
        Call(db, 1, [&] { return repository.GetPlant(plant.UUID, sample.Clone); });
        list(2, &PlantRepository::ListPlantEvents, sample.Event, sample.Event);
        list(3, &PlantRepository::ListPlantCareEntries, sample.Care, sample.Unlinked);
        list(4, &PlantRepository::ListPlantPhotos, sample.Photo, sample.Photo);
        list(5, &PlantRepository::ListPlantHealthObservations, sample.Observation, sample.Observation);
        list(6, &PlantRepository::ListPlantJournalEntries, sample.Entry, sample.Entry);
        Call(db, 7, [&] { return repository.GetHarvestRecord(plant.UUID, sample.Harvest); });
        sample.Mother = plant;
    }
    if (!plants.empty())
        sample.Clone = plants.front();

    std::vector<Strain> strains;
    Call(db, 8, [&] { return repository.ListStrains(strains); });
    strains.resize(std::min<std::size_t>(strains.size(), 8));
    for (const Strain& strain : strains)
    {
        StrainSummary summary;
        Call(db, 9, [&] { return repository.GetStrain(strain.ID, sample.Unused); });
        Call(db, 10, [&] { return repository.GetStrainSummary(strain.ID, summary); });
        sample.Kind = strain;
    }
    return sample;
}

// Every operation. The deletes are last, records before plants, so that each operation has something to work on.
std::vector<Operation> OrderedOperations()
{
    const auto deletes = [](const Operation& operation) { return operation.Name.starts_with("Delete"); };
    std::vector<Operation> operations;
    std::remove_copy_if(Operations().begin(), Operations().end(), std::back_inserter(operations), deletes);
    std::copy_if(Operations().rbegin(), Operations().rend(), std::back_inserter(operations), deletes);
    return operations;
}

bool Open(PlantDatabase& database, const std::string& path)
{
    std::string error;
    const bool opened = database.Open(path, &error);
    Require(database.IsOpen() == opened && database.Path() == (opened ? path : ""), "half open");
    Require(opened || error == database.LastError(), "two reasons");
    return opened;
}

// Inspects and checks the file, which must change nothing.
void InspectAndCheck(const ScratchDirectory& scratch, const std::string& path)
{
    const auto before = scratch.Files();
    PlantFileInspection inspection;
    const bool inspected = bool(InspectPlantDatabase(path, inspection));
    std::vector<PlantFileFinding> findings;
    const bool checked = bool(CheckPlantDatabase(path, findings));
    const PlantFileKind kind = inspection.Kind;
    Require(inspected, "a file that cannot be inspected");
    Require(kind == PlantFileKind::Older || inspection.Steps.empty(), "steps of a file that is not older");
    Require((kind == PlantFileKind::Foreign || kind == PlantFileKind::Damaged) != inspection.Reasons.empty(),
            "a reason that is missing or not needed");
    Require(!checked || kind == PlantFileKind::Current || kind == PlantFileKind::Older ||
                kind == PlantFileKind::Foreign || kind == PlantFileKind::Damaged,
            "a file was checked that is not a journal");
    Require(scratch.Files() == before, "an inspection changed a file");
}

// A backup is a journal, whatever the file is.
void BackUp(const ScratchDirectory& scratch, const std::string& path)
{
    const std::string copy = scratch.File("copy.db");
    if (BackUpPlantDatabase(path, copy, {}, PlantBackUpMode::Overwrite))
    {
        PlantFileInspection inspection;
        Require(bool(InspectPlantDatabase(copy, inspection)), "a backup that cannot be inspected");
        Require(inspection.Kind == PlantFileKind::Current || inspection.Kind == PlantFileKind::Older,
                "a backup that is not a journal");
    }
    std::filesystem::remove(copy);
    Require(scratch.Files().size() <= 2, "a file was left"); // the file and its journal
}

// A salvage changes no byte, and what it writes is a journal without damage.
void Salvage(const ScratchDirectory& scratch, const std::string& path)
{
    const auto before = scratch.Files();
    const std::string salvaged = scratch.File("salvaged.db");
    PlantSalvageReport report;
    if (SalvagePlantDatabase(path, salvaged, report))
    {
        PlantFileInspection inspection;
        Require(bool(InspectPlantDatabase(salvaged, inspection)), "a salvaged journal that cannot be inspected");
        Require(inspection.Kind == PlantFileKind::Current, "a salvaged file that is not a journal");
    }
    std::filesystem::remove(salvaged);
    Require(scratch.Files() == before, "a salvage changed a file");
}

} // namespace

// libFuzzer's name: https://llvm.org/docs/LibFuzzer.html#fuzz-target
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const ScratchDirectory scratch;
    static const std::string path = scratch.File("journal.db");
    static const std::vector<Operation> operations = OrderedOperations();
    WriteFiles(path, Input(data, size));
    InspectAndCheck(scratch, path);
    Salvage(scratch, path);

    PlantDatabase database;
    if (Open(database, path))
    {
        PlantRepository repository(database);
        const SampleRecords sample = ReadRecords(database.NativeHandle(), repository);
        std::size_t number = 16;
        for (const Operation& operation : operations)
        {
            SampleRecords copy = sample;
            Call(database.NativeHandle(), number++, [&] { return operation.Call(repository, copy); });
        }
        database.Close();
    }
    Open(database, path);
    database.Close();
    InspectAndCheck(scratch, path);
    BackUp(scratch, path);
    return 0;
}
