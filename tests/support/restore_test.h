#pragma once

#include "plant_file.h"

#include "support/backup_test.h"
#include "support/copy_over.h"
#include "support/fixed_time.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace support
{

// A journal that has changed since its backup, Destination, was made: its plants have other notes.
class RestoreTest : public BackUpTest
{
  protected:
    RestoreTest()
    {
        Grow();
        EXPECT_EQ(BackUp(), "");
        BackedUp = ContentOf(Destination);
        PlainConnection(Path).RunSQL("UPDATE Plants SET Notes='later'; DELETE FROM PlantJournalEntries WHERE ID>3900;");
        Later = ContentOf(Path);
        LaterBytes = FileBytes(Path);
    }

    // Makes both files small, for tests that restore many times.
    void Shrink()
    {
        PlainConnection(Path).RunSQL("DELETE FROM PlantJournalEntries WHERE ID>60; VACUUM;");
        CopyOver(Path, Destination);
        PlainConnection(Destination).RunSQL("DELETE FROM PlantJournalEntries WHERE ID>30; UPDATE Plants SET Notes='';");
        BackedUp = ContentOf(Destination);
        Later = ContentOf(Path);
        LaterBytes = FileBytes(Path);
    }

    static std::string ContentOf(const std::string& path)
    {
        return support::Content(PlainConnection(path).NativeHandle());
    }

    // Restores the backup, and returns the error.
    std::string Restore(const PlantBackUpProgress& progress = {})
    {
        const FixedTime now(1777636800); // 1 May 2026 at noon in Greenwich
        return RestorePlantDatabase(Destination, Path, Restoration, progress).Error;
    }

    // Overwrites bytes of the journal.
    void Overwrite(std::streamoff offset, std::size_t count, char byte = '\0') const
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(offset);
        file << std::string(count, byte);
    }
    // Damages the journal so that it can still be opened: its middle is zeros.
    void Damage() const { Overwrite(static_cast<std::streamoff>(LaterBytes.size() / 2), 40'960); }

    // The journal is whole and has the backup's content, and the former one is kept.
    void ExpectRestored(const std::string& former) const
    {
        EXPECT_EQ(ContentOf(Path), BackedUp);
        EXPECT_EQ(support::Damage(PlainConnection(Path).NativeHandle()), "ok");
        EXPECT_EQ(Restoration.KeptPath, Kept);
        EXPECT_EQ(FileBytes(Kept) == former, true);
        EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db", "journal.db.before-restore-2026-05-01"}));
    }

    std::string BackedUp;   // the content of the backup
    std::string Later;      // the content of the journal
    std::string LaterBytes; // its bytes
    std::string Kept = Path + ".before-restore-2026-05-01";
    PlantRestoration Restoration;
};

} // namespace support
