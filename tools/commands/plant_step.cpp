#include "commands/plant_step.h"

#include "commands/care_summary.h"
#include "journal/find_record.h"
#include "journal/sql.h"

PlantStep StepOf(const Plant& plant, PlantEventType type, const std::string& date)
{
    PlantStep step;
    step.Of = plant;
    step.Event.PlantUUID = plant.UUID;
    step.Event.EventDate = date;
    step.Event.Type = type;
    return step;
}

PlantStep MoveToStage(const Plant& plant, PlantStage stage, const std::string& date)
{
    const bool flip = stage == PlantStage::Flower;
    PlantStep step = StepOf(plant, flip ? PlantEventType::Flip : PlantEventType::Stage, date);
    step.ChangesPlant = true;
    step.Of.Stage = stage;
    if (flip)
        step.Of.FlipDate = date;
    else
        step.Event.Details = PlantStageName(stage);
    step.Summary = stage == PlantStage::Archived ? "Archived " + DisplayName(plant)
                                                 : "Moved " + DisplayName(plant) + " to " + PlantStageName(stage);
    step.Summary += OnDate(date);
    return step;
}

void StoreSteps(Session& session, std::vector<PlantStep>& steps)
{
    PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": the events could not be stored");
    Transaction transaction(journal);
    for (PlantStep& step : steps)
    {
        const std::string failure = " of " + DisplayName(step.Of) + " could not be stored, and nothing was changed";
        session.Require(!step.ChangesPlant || repository.UpdatePlant(step.Of), "the change" + failure);
        session.Require(repository.CreatePlantEvent(step.Event), "the event" + failure);
    }
    transaction.Commit();
}

void StoreEditedPlant(Session& session, const Plant& before, Plant& plant, const FieldNames& fields,
                      const std::string& advice)
{
    constexpr const char* failure = "the plant could not be changed";
    PlantRepository& repository = session.Write();
    if (plant.Stage == before.Stage)
        return session.Require(repository.UpdatePlant(plant), failure, advice);
    const bool flipDateGiven =
        plant.Stage == PlantStage::Flower && fields.contains("FlipDate") && !plant.FlipDate.empty();
    PlantStep step = MoveToStage(plant, plant.Stage, flipDateGiven ? plant.FlipDate : PlantEventCurrentDate());
    if (fields.contains("FlipDate"))
        step.Of.FlipDate = plant.FlipDate;
    const SQL journal(session.Connection(), session.Path() + ": " + failure);
    Transaction transaction(journal);
    session.Require(repository.UpdatePlant(step.Of), failure, advice);
    session.Require(repository.CreatePlantEvent(step.Event), failure);
    transaction.Commit();
    plant = step.Of;
}

void StoreAndReportSteps(Session& session, std::vector<PlantStep>& steps, Records records)
{
    Notices notices;
    for (const PlantStep& step : steps)
        Append(notices, CheckValues(step.Event, step.Of, session.Flags));
    PrintNotices(notices);
    if (!steps.empty())
        StoreSteps(session, steps);
    Outcome outcome(session, records);
    for (const PlantStep& step : steps)
    {
        const std::string id = std::to_string(step.Event.ID);
        outcome.Add(step.Summary + " (event " + id + ")", id, RecordJSON(step.Event, step.Of));
    }
    outcome.Finish();
}
