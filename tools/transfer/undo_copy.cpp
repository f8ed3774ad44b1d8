#include "transfer/undo_copy.h"

#include "journal/change_set.h"
#include "journal/file_result.h"
#include "journal/undo_store.h"
#include "plant_file.h"
#include "refusal.h"
#include "system.h"

#include <exception>
#include <filesystem>

UndoCopy::UndoCopy(const Session& session) : Journal(session)
{
    if (!CanRecordChanges())
        return;
    try
    {
        Name.emplace(UndoStore(session.Path()).TemporaryPrefix());
        RequireBackUp(BackUpPlantDatabase(session.Path(), Name->Path()), session.Path());
        using std::filesystem::perms; // the copy has the journal's own permissions
        std::filesystem::permissions(plant_file::PathOfText(Name->Path()), perms::owner_read | perms::owner_write);
    }
    catch (const std::exception& reason)
    {
        PrintNoUndo(reason.what());
        Name.reset();
    }
}

void UndoCopy::Keep() const
{
    if (Name)
        Journal.SaveCopyForUndo(Name->Path());
}
