/// @file plant.h
/// What a plant journal is made of: plain records, the enumerations that classify them, and the names under which
/// the enumerations are stored.
///
/// A record is a value: copy it, move it, keep it as long as you like. It holds no database state and is tied to no
/// thread; its methods, which work through a repository, follow the thread rule of that.
///
/// Texts are byte strings, UTF-8 by convention. Dates are texts too, written `YYYY-MM-DD` in local time; an empty text
/// means that no date is set. Dates are sorted as texts, so any other form should also sort chronologically as text.
///
/// Every record carries `ID`, its row number in the journal file, 0 until it is stored. A row number may be given to
/// another record once its own was deleted: to remember a plant or a photo, keep its `UUID`.
///
/// The methods of the records are short forms of the repository's operations. `Save` creates the record where its `ID`
/// is 0 and updates it otherwise; when it fails, by `false` or by an exception, the record is left exactly as it was,
/// so that saving it again later is safe. `Delete` leaves the record itself alone: to store it anew, set its `ID` to 0.
#pragma once

#include <cstdint>
#include <string>

/// Marks what a shared library offers to its users; all else in it is hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_API __attribute__((visibility("default")))
#elif defined(plantjournal_EXPORTS) // by CMake, while it builds the library; a user needs no mark
#define PLANTJOURNAL_API __declspec(dllexport)
#else
#define PLANTJOURNAL_API
#endif

class PlantRepository;

/// The growth stage of a plant.
enum class PlantStage : std::int32_t
{
    Seed,      ///< Sown, not yet growing on.
    Clone,     ///< A cutting that has to root.
    Veg,       ///< Growing.
    Flower,    ///< Flowering.
    Dry,       ///< Cut and drying.
    Cure,      ///< Dried and curing.
    Harvested, ///< Done; `PlantRepository::SaveHarvestRecord` sets it.
    Archived   ///< Put away by the grower.
};

/// The sex of a plant.
enum class PlantSex : std::int32_t
{
    Unknown,      ///< Not known, or not yet.
    Female,       ///< Female.
    Male,         ///< Male.
    Hermaphrodite ///< Both.
};

/// The kind of a timeline event.
enum class PlantEventType : std::int32_t
{
    Clone,      ///< Cut as a clone, or clones cut from it.
    Transplant, ///< Transplanted.
    Flip,       ///< Flipped to flower.
    Harvest,    ///< Harvested; the mirror of a `HarvestRecord`.
    Feed,       ///< Fed; the mirror of a `PlantCareEntry`.
    Water,      ///< Watered; the mirror of a `PlantCareEntry`.
    Stage,      ///< Moved to another growth stage.
    Topped,     ///< Topped.
    LSTTrained, ///< Trained under low stress. Stored as `LST Trained`, with a blank.
    Defoliated, ///< Defoliated.
    Note        ///< Anything else.
};

/// What was done in a care entry.
enum class PlantCareAction : std::int32_t
{
    Feed, ///< Fed, with a product.
    Water ///< Watered.
};

/// The kind of a journal entry.
enum class PlantJournalType : std::int32_t
{
    Observation, ///< Something seen.
    Training,    ///< Training.
    Pruning,     ///< Pruning.
    Topping,     ///< Topping.
    Defoliation, ///< Defoliation.
    Milestone    ///< A milestone.
};

/// @name Stored names
/// Enumerations are stored by name, never by number. A `...Name` function returns a constant text that lives for the
/// whole run and is never null; a number outside the enumeration is named as the record's default value. A
/// `...FromName` function is its inverse and compares exactly, case included; a text that is no stored name (the empty
/// text, too) yields the record's default value.
/// @{
PLANTJOURNAL_API const char* PlantStageName(PlantStage stage);                     ///< `Veg` for a number outside.
PLANTJOURNAL_API PlantStage PlantStageFromName(const std::string& name);           ///< Default `Veg`.
PLANTJOURNAL_API const char* PlantSexName(PlantSex sex);                           ///< `Unknown` for a number outside.
PLANTJOURNAL_API PlantSex PlantSexFromName(const std::string& name);               ///< Default `Unknown`.
PLANTJOURNAL_API const char* PlantEventTypeName(PlantEventType type);              ///< `Note` for a number outside.
PLANTJOURNAL_API PlantEventType PlantEventTypeFromName(const std::string& name);   ///< Default `Note`.
PLANTJOURNAL_API const char* PlantCareActionName(PlantCareAction action);          ///< `Water` for a number outside.
PLANTJOURNAL_API PlantCareAction PlantCareActionFromName(const std::string& name); ///< Default `Water`.
PLANTJOURNAL_API const char* PlantJournalTypeName(PlantJournalType type); ///< `Observation` for a number outside.
PLANTJOURNAL_API PlantJournalType PlantJournalTypeFromName(const std::string& name); ///< Default `Observation`.
/// @}

/// Today's date in local time, as `YYYY-MM-DD`. Looks at the time zone anew each time, so that no other thread may be
/// changing the environment.
PLANTJOURNAL_API std::string PlantEventCurrentDate();

/// One plant.
struct PLANTJOURNAL_API Plant
{
    std::int64_t ID = 0;                ///< Row number; 0 until the plant is stored.
    std::string UUID;                   ///< Lasting public identifier; every other record refers to a plant by it.
    std::string Name;                   ///< Display name.
    std::string Strain;                 ///< Name of the strain; empty for none.
    std::string MotherPlantUUID;        ///< The plant that this one was cloned from; empty for none.
    PlantStage Stage = PlantStage::Veg; ///< Growth stage.
    PlantSex Sex = PlantSex::Unknown;   ///< Sex.
    std::string Tent;                   ///< Where the plant stands.
    std::string PotSize;                ///< Pot size, free text.
    std::string Medium;                 ///< Growing medium, free text.
    std::string SeedDate;               ///< Date sown.
    double FlipHeightCm = 0;            ///< Height when flipped to flower, centimetres.
    double FinalHeightCm = 0;           ///< Final height, centimetres.
    std::string CloneDate;              ///< Date cut as a clone.
    std::string TransplantDate;         ///< Date transplanted.
    std::string FlipDate;               ///< Date flipped to flower.
    std::string HarvestDate;            ///< Date harvested.
    std::string Notes;                  ///< Free notes.

    /// Reads the plant `uuid` into this record. `false` leaves the record as it was.
    /// @see PlantRepository::GetPlant
    bool Load(PlantRepository& repository, const std::string& uuid);
    /// Stores this record, new where `ID` is 0. `false` leaves it as it was.
    /// @see PlantRepository::CreatePlant, PlantRepository::UpdatePlant
    bool Save(PlantRepository& repository);
    /// Deletes the plant with this `UUID` and all that hangs off it.
    /// @see PlantRepository::DeletePlant
    bool Delete(PlantRepository& repository) const;
    /// Stores a copy of this plant and returns it; a copy that could not be stored has `ID` 0.
    /// @see PlantRepository::DuplicatePlant
    Plant Duplicate(PlantRepository& repository) const;
};

/// One strain (cultivar). Plants refer to it by its name.
struct Strain
{
    std::int64_t ID = 0;    ///< Row number; 0 until the strain is stored.
    std::string Name;       ///< Unique name, case included.
    std::string Breeder;    ///< Breeder.
    int FloweringWeeks = 0; ///< Expected flowering time, weeks.
    std::string Notes;      ///< Free notes.
};

/// One entry of a plant's timeline.
struct PLANTJOURNAL_API PlantEvent
{
    std::int64_t ID = 0;                        ///< Row number; 0 until the event is stored.
    std::string PlantUUID;                      ///< The plant that it belongs to.
    std::string EventDate;                      ///< Date of the event.
    PlantEventType Type = PlantEventType::Note; ///< Kind of event.
    std::string Details;                        ///< Free text shown on the timeline.

    /// Stores this record, new where `ID` is 0. `false` leaves it as it was.
    /// @see PlantRepository::CreatePlantEvent, PlantRepository::UpdatePlantEvent
    bool Save(PlantRepository& repository);
    /// Deletes the event with this `ID`.
    /// @see PlantRepository::DeletePlantEvent
    bool Delete(PlantRepository& repository) const;
};

/// One feeding or watering. Its mirror on the plant's timeline is kept by the repository.
struct PLANTJOURNAL_API PlantCareEntry
{
    std::int64_t ID = 0;                             ///< Row number; 0 until the entry is stored.
    std::int64_t TimelineEventID = 0;                ///< The event that mirrors this entry; 0 for none.
    std::string PlantUUID;                           ///< The plant that it belongs to.
    std::string CareDate;                            ///< Date of care.
    PlantCareAction Action = PlantCareAction::Water; ///< Feed or water.
    std::string Product;                             ///< Nutrient product.
    double AmountMl = 0;                             ///< Amount given, millilitres.
    double EC = 0;                                   ///< Electrical conductivity of the solution, in the grower's unit.
    double PH = 0;                                   ///< pH of the solution.
    double RunoffMl = 0;                             ///< Run-off, millilitres.
    std::string Notes;                               ///< Free notes.

    /// Stores this record, new where `ID` is 0. `false` leaves it as it was.
    /// @see PlantRepository::CreatePlantCareEntry, PlantRepository::UpdatePlantCareEntry
    bool Save(PlantRepository& repository);
    /// Deletes the entry with this `ID`, and its event.
    /// @see PlantRepository::DeletePlantCareEntry
    bool Delete(PlantRepository& repository) const;
};

/// The harvest result of a plant; at most one per plant. Its mirror on the timeline is kept by the repository.
struct HarvestRecord
{
    std::int64_t ID = 0;              ///< Row number; 0 until the record is stored.
    std::int64_t TimelineEventID = 0; ///< The event that mirrors this record; 0 for none.
    std::string PlantUUID;            ///< The harvested plant.
    std::string HarvestDate;          ///< Date of harvest.
    double WetWeightG = 0;            ///< Wet weight, grams.
    double DryWeightG = 0;            ///< Dry weight, grams; 0 counts as not weighed.
    double QualityRating = 0;         ///< Quality, out of 10; 0 counts as not rated.
    int SeedYield = 0;                ///< Number of seeds harvested.
    std::string CureOutcome;          ///< Result of curing, free text.
    std::string Notes;                ///< Free notes.
};

/// What a strain's plants have come to. Computed on request, never stored.
struct StrainSummary
{
    std::int64_t StrainID = 0;    ///< The strain's row number.
    std::string StrainName;       ///< The strain's name.
    int TotalPlants = 0;          ///< Plants of the strain.
    int Seed = 0;                 ///< Plants in stage `Seed`.
    int Clone = 0;                ///< Plants in stage `Clone`.
    int Veg = 0;                  ///< Plants in stage `Veg`.
    int Flower = 0;               ///< Plants in stage `Flower`.
    int Dry = 0;                  ///< Plants in stage `Dry`.
    int Cure = 0;                 ///< Plants in stage `Cure`.
    int Harvested = 0;            ///< Plants in stage `Harvested`.
    int Archived = 0;             ///< Plants in stage `Archived`.
    int HarvestCount = 0;         ///< Plants with a harvest record.
    double AverageDryWeightG = 0; ///< Mean of the dry weights that are not 0, grams; 0 when there is none.
    double AverageQuality = 0;    ///< Mean of the quality ratings that are not 0; 0 when there is none.
};

/// A reference to a photo of a plant. The image file itself is never read, written or deleted.
struct PLANTJOURNAL_API PlantPhoto
{
    std::int64_t ID = 0;   ///< Row number; 0 until the photo is stored.
    std::string UUID;      ///< Lasting public identifier; update and delete find the photo by it.
    std::string PlantUUID; ///< The plant that it belongs to.
    std::string PhotoDate; ///< Date taken.
    std::string FilePath;  ///< Path of the image file.
    std::string Caption;   ///< Caption.

    /// Stores this record, new where `ID` is 0. `false` leaves it as it was.
    /// @see PlantRepository::CreatePlantPhoto, PlantRepository::UpdatePlantPhoto
    bool Save(PlantRepository& repository);
    /// Deletes the photo with this `UUID`.
    /// @see PlantRepository::DeletePlantPhoto
    bool Delete(PlantRepository& repository) const;
};

/// A health problem seen on a plant.
struct PlantHealthObservation
{
    std::int64_t ID = 0;         ///< Row number; 0 until the observation is stored.
    std::string PlantUUID;       ///< The plant that it belongs to.
    std::string ObservationDate; ///< Date observed.
    std::string Issue;           ///< The problem seen.
    int Severity = 1;            ///< From 1 (slight) to 5 (severe).
    std::string Treatment;       ///< Treatment applied.
    std::string Notes;           ///< Free notes.
};

/// A journal entry of a plant.
struct PlantJournalEntry
{
    std::int64_t ID = 0;                                   ///< Row number; 0 until the entry is stored.
    std::string PlantUUID;                                 ///< The plant that it belongs to.
    std::string EntryDate;                                 ///< Date of the entry.
    PlantJournalType Type = PlantJournalType::Observation; ///< Kind of entry.
    std::string Details;                                   ///< Free text.
};
