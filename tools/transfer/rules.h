#pragma once

#include "journal/session.h"
#include "transfer/imported.h"

// Creates missing UUIDs, links the rows to the plants that they name, checks the imported records against each other
// and against the journal, and drops the strains that the journal already has.
void CheckRules(ImportedTables& tables, Session& session, ImportMessages& messages);
