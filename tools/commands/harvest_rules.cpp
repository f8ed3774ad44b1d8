#include "commands/harvest_rules.h"

#include "commands/deletion.h"
#include "commands/field_flags.h"
#include "commands/outcome.h"
#include "commands/summary.h"
#include "journal/sql.h"
#include "record/amount.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/console.h"
#include "terminal/printable.h"
#include "terminal/prompt.h"

#include <iostream>

namespace
{

std::string HarvestStageObjection(const std::string& text)
{
    try
    {
        PlantStage stage{};
        ParseValue(text, &stage);
        return stage == PlantStage::Harvested ? "the plant keeps the stage Harvested without this option" : "";
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

bool ParseWeight(std::string text, double& weight)
{
    text.erase(text.find_last_not_of(' ') + 1);
    try
    {
        ParseValue(WithoutWeightUnit(text), &weight);
        return weight >= 0 && !IsInfinite(&weight);
    }
    catch (const BadValue&)
    {
        return false;
    }
}

// An empty answer leaves the weight unchanged.
void AskForWeight(const std::string& what, double& weight)
{
    for (;;)
    {
        const std::optional<std::string> answer = Ask(what + " in g, empty if not weighed:");
        if (!answer)
            throw Refusal("nothing was stored; give --wet-weight-g, --dry-weight-g or --unweighed");
        if (answer->empty() || ParseWeight(*answer, weight))
            return;
        std::cerr << InQuotes(Printable(*answer)) << " is not a weight; write a number such as 96.5\n";
    }
}

// What becomes of the plant when its record is deleted.
std::string WhatBecomesOf(const Plant& plant, const std::optional<PlantStage>& stage)
{
    if (stage)
        return std::string("; stage ") + PlantStageName(*stage) + ", harvest date cleared";
    const std::string kept = std::string("; stage ") + PlantStageName(plant.Stage);
    return plant.HarvestDate.empty() ? kept + " stays" : kept + " and harvest date " + plant.HarvestDate + " stay";
}

// The repository deletes a harvest record in a transaction of its own, which cannot also change the plant. The stage is
// corrected and not reached on this day, so no event is written and the flip date stays.
void DeleteAndSetStage(Session& session, Plant plant, const HarvestRecord& record, PlantStage stage)
{
    const std::string failure = "the harvest record could not be deleted";
    PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": " + failure);
    Transaction transaction(journal);
    {
        Statement deletion(journal, "DELETE FROM HarvestRecords WHERE ID=?;");
        deletion.Bind(1, record.ID);
        deletion.Step();
        Statement eventDeletion(journal, "DELETE FROM PlantEvents WHERE ID=?;");
        eventDeletion.Bind(1, record.TimelineEventID);
        eventDeletion.Step();
    }
    plant.Stage = stage;
    plant.HarvestDate.clear();
    session.Require(repository.UpdatePlant(plant), failure);
    transaction.Commit();
}

} // namespace

void AddUnweighed(CLI::App& command, Arguments& given)
{
    AddSwitch(command, "--unweighed", "store the harvest without a weight", given.Unweighed);
}

void AddStageAfterDeletion(CLI::App& command, Arguments& given)
{
    const PlantStage any{};
    AddFlag(command,
            {"--stage", "stage of the plant, whose harvest date is cleared; without it, both stay",
             FlagType("Stage", Use::Value, &any), Need::Optional, HarvestStageObjection},
            given.Stage);
}

void RequireWeights(const Arguments& given, const FieldNames& set, HarvestRecord& record)
{
    const bool weighed = set.contains("WetWeightG") || set.contains("DryWeightG");
    if (weighed && given.Unweighed)
        RefuseUsage("--unweighed contradicts a weight; leave one of them out");
    if (weighed || given.Unweighed)
        return;
    if (!InputIsTerminal())
        throw Refusal("the harvest has no weight; give --wet-weight-g, --dry-weight-g or --unweighed");
    AskForWeight("Wet weight", record.WetWeightG);
    AskForWeight("Dry weight", record.DryWeightG);
}

void DeleteHarvest(Session& session, const Arguments& given, const Plant& plant, const HarvestRecord& record)
{
    std::optional<PlantStage> stage;
    if (given.Stage)
        ParseValue(*given.Stage, &stage.emplace());
    const std::string what = RecordInWords(plant, record) + WhatBecomesOf(plant, stage);
    ConfirmDeletion(what, given);
    if (stage)
        DeleteAndSetStage(session, plant, record, *stage);
    else
        session.Require(session.Write().DeleteHarvestRecord(plant.UUID), "the harvest record could not be deleted");
    ReportChange(session, "Deleted " + what);
}
