#pragma once

#include "journal/session.h"

#include <vector>

// Reports a new name that is easily mistaken for an existing one. Construct it before the change, with the journal
// open for writing, and call an operation after the change; each prints one line for each name on standard error.
class NameNotices
{
  public:
    explicit NameNotices(Session& session);

    // The plant's name, and its strain where it is a new one.
    void Print(const Plant& plant) const;
    void Print(const Strain& strain) const;

  private:
    std::vector<Plant> Plants;
    std::vector<Strain> Strains;
};
