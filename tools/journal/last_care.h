#pragma once

#include "journal/session.h"

#include <map>
#include <string>

struct LastCare
{
    std::string Date;
    std::string Action; // its stored name
};

// The newest care entry of every plant that has one, by the plant's UUID. Throws Refusal.
std::map<std::string, LastCare> LastCareOfPlants(Session& session);
