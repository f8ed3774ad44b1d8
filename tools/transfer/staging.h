#pragma once

#include "journal/session.h"
#include "transfer/temporary_name.h"

#include <cstddef>
#include <cstdint>
#include <string>

// A copy of the journal in which an import is built. Only WriteBack() writes to the journal.
class StagedCopy
{
  public:
    // Copies the journal, which must be open. Throws Refusal.
    explicit StagedCopy(Session& session);

    const std::string& Path() const { return Name.Path(); }

    // Returns how many more findings `check` has in the copy than in the journal. Throws Refusal if the copy is damaged
    // or a reference in it is broken.
    std::size_t CountNewFindings() const;

    // Replaces the content of the journal with the copy's in one transaction. Throws Refusal if another program wrote
    // to the journal after it was copied.
    void WriteBack() const;

  private:
    Session& Journal;
    std::int64_t DataVersion; // of the journal before it was copied
    TemporaryName Name;
};
