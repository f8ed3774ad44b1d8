#include "transfer/staging.h"

#include "journal/file_result.h"
#include "journal/sql.h"
#include "plant_file.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "transfer/undo_copy.h"

#include <vector>

namespace
{

std::size_t CountFindings(const std::string& path)
{
    std::vector<PlantFileFinding> findings;
    RequireRead(CheckPlantDatabase(path, findings), path, "nothing was changed");
    for (const PlantFileFinding& finding : findings)
        if (finding.Kind == PlantFindingKind::Damage || finding.Kind == PlantFindingKind::ForeignKey)
            throw Refusal(path + ": checking: " + finding.Description +
                          "; nothing was changed; `plantjournal check` lists all errors");
    return findings.size();
}

} // namespace

StagedCopy::StagedCopy(Session& session)
    : Journal(session), DataVersion(SQL(session.Connection(), session.Path() + ": reading").DataVersion()),
      Name(session.Path() + ".import-")
{
    RequireBackUp(BackUpPlantDatabase(session.Path(), Path()), session.Path(), "nothing was changed");
}

std::size_t StagedCopy::CountNewFindings() const
{
    const std::size_t before = CountFindings(Journal.Path());
    const std::size_t after = CountFindings(Path());
    return after > before ? after - before : 0;
}

void StagedCopy::WriteBack() const
{
    const UndoCopy before(Journal);
    const SQL journal(Journal.Connection(), Journal.Path() + ": writing");
    // The lock is kept until the connection ends, so that no other program writes between the look at the
    // data version and the copying: SQLite's backup needs a destination without an open transaction.
    journal.LockUntilClosed();
    if (journal.DataVersion() != DataVersion)
        throw Refusal(Journal.Path() + ": another program wrote to it meanwhile; nothing was changed; import again");

    PlantDatabase copy;
    if (std::string error; !copy.Open(Path(), &error))
        throw Refusal(Path() + ": opening the copy: " + error +
                      "; nothing was changed; `plantjournal check` examines the journal");
    StopIfInterrupted(); // for the last time: the next step cannot be interrupted
    journal.CopyPagesFrom(copy.NativeHandle());
    before.Keep();
}
