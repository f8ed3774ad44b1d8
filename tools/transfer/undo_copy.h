#pragma once

#include "journal/session.h"
#include "transfer/temporary_name.h"

#include <optional>

// A copy of the journal from before an import, for `undo`. Without it, the import goes on, after a notice.
class UndoCopy
{
  public:
    // Copies the journal, which must be open and not locked. `session` must live as long as the copy.
    explicit UndoCopy(const Session& session);

    // Keeps the copy for `undo`. Call it once the journal is changed, while it is locked.
    void Keep() const;

  private:
    const Session& Journal;
    std::optional<TemporaryName> Name; // empty if no copy was made
};
