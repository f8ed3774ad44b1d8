/// @file plant.h
/// The records of a plant journal, the enumerations that classify them, and the names under which the enumerations are
/// stored.
///
/// A record is a plain value: it can be copied, moved and kept, and it holds no database state. Its methods use a
/// repository and follow the thread rule of that repository.
///
/// Texts are byte strings, UTF-8 by convention. Dates are texts of the form `YYYY-MM-DD` in local time. An empty text
/// means that no date is set. Lists sort dates as texts, so a date of another form must also sort chronologically as
/// text.
///
/// Every record has an `ID`: its row ID in the journal file, 0 until it is stored. After a record is deleted, a new
/// record may receive its row ID. To identify a plant or a photo permanently, keep its `UUID`.
///
/// The methods of the records are short forms of the operations of `PlantRepository`. `Save` creates the record if its
/// `ID` is 0 and updates it otherwise. If `Save` returns `false` or throws, the record is unchanged and can be saved
/// again. `Delete` does not change the record. To store a deleted record again, set its `ID` to 0 first.
#pragma once

#include <cstdint>
#include <string>

/// Exports a class or function from a shared library. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_API __attribute__((visibility("default")))
#elif defined(plantjournal_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_API __declspec(dllexport)
#else
#define PLANTJOURNAL_API
#endif

class PlantRepository;

/// The growth stage of a plant.
enum class PlantStage : std::int32_t
{
    Seed,      ///< Sown.
    Clone,     ///< A cutting that is growing roots.
    Veg,       ///< Growing, before flowering.
    Flower,    ///< Flowering.
    Dry,       ///< Cut and drying.
    Cure,      ///< Dried and curing.
    Harvested, ///< Harvested. `PlantRepository::SaveHarvestRecord` sets this stage.
    Archived   ///< Archived by the grower.
};

/// The sex of a plant.
enum class PlantSex : std::int32_t
{
    Unknown,      ///< Not known.
    Female,       ///< Female.
    Male,         ///< Male.
    Hermaphrodite ///< Both.
};

/// The kind of a timeline event.
enum class PlantEventType : std::int32_t
{
    Clone,      ///< Cut as a clone, or a clone was cut from the plant.
    Transplant, ///< Transplanted.
    Flip,       ///< Switched to flowering, for example by a change of light.
    Harvest,    ///< Harvested. A `HarvestRecord` owns an event of this type.
    Feed,       ///< Fed. A `PlantCareEntry` owns an event of this type.
    Water,      ///< Watered. A `PlantCareEntry` owns an event of this type.
    Stage,      ///< Moved to another growth stage.
    Topped,     ///< The tip of the main stem was cut off.
    LSTTrained, ///< Trained with low stress (bent, not cut). The stored name is `LST Trained`, with a space.
    Defoliated, ///< Leaves were removed.
    Note        ///< Any other event.
};

/// The action of a care entry.
enum class PlantCareAction : std::int32_t
{
    Feed, ///< Fed.
    Water ///< Watered.
};

/// The kind of a journal entry.
enum class PlantJournalType : std::int32_t
{
    Observation, ///< An observation.
    Training,    ///< Training.
    Pruning,     ///< Pruning.
    Topping,     ///< Topping.
    Defoliation, ///< Defoliation.
    Milestone    ///< A milestone.
};

/// @name Stored names
/// Enumerations are stored by name. A `...Name` function returns a constant text that is never null and stays valid
/// until the program ends. For a number outside the enumeration it returns the name of the default value. A
/// `...FromName` function returns the value with exactly this name; upper and lower case differ. For any other text,
/// including the empty text, it returns the default value.
/// @{
PLANTJOURNAL_API const char* PlantStageName(PlantStage stage);                       ///< Default `Veg`.
PLANTJOURNAL_API PlantStage PlantStageFromName(const std::string& name);             ///< Default `Veg`.
PLANTJOURNAL_API const char* PlantSexName(PlantSex sex);                             ///< Default `Unknown`.
PLANTJOURNAL_API PlantSex PlantSexFromName(const std::string& name);                 ///< Default `Unknown`.
PLANTJOURNAL_API const char* PlantEventTypeName(PlantEventType type);                ///< Default `Note`.
PLANTJOURNAL_API PlantEventType PlantEventTypeFromName(const std::string& name);     ///< Default `Note`.
PLANTJOURNAL_API const char* PlantCareActionName(PlantCareAction action);            ///< Default `Water`.
PLANTJOURNAL_API PlantCareAction PlantCareActionFromName(const std::string& name);   ///< Default `Water`.
PLANTJOURNAL_API const char* PlantJournalTypeName(PlantJournalType type);            ///< Default `Observation`.
PLANTJOURNAL_API PlantJournalType PlantJournalTypeFromName(const std::string& name); ///< Default `Observation`.
/// @}

/// Returns today's date in local time as `YYYY-MM-DD`. Each call reads the time zone from the environment, so no other
/// thread may change the environment during the call.
PLANTJOURNAL_API std::string PlantEventCurrentDate();

/// One plant.
struct PLANTJOURNAL_API Plant
{
    std::int64_t ID = 0;                ///< Row ID; 0 until the plant is stored.
    std::string UUID;                   ///< Permanent identifier; other records contain it as `PlantUUID`.
    std::string Name;                   ///< Display name.
    std::string Strain;                 ///< Name of the strain; empty for none.
    std::string MotherPlantUUID;        ///< UUID of the plant that this one was cloned from; empty for none.
    PlantStage Stage = PlantStage::Veg; ///< Growth stage.
    PlantSex Sex = PlantSex::Unknown;   ///< Sex.
    std::string Tent;                   ///< Where the plant stands.
    std::string PotSize;                ///< Pot size, free text.
    std::string Medium;                 ///< Growing medium, free text.
    std::string SeedDate;               ///< Date sown.
    double FlipHeightCm = 0;            ///< Height when switched to flowering, in centimetres.
    double FinalHeightCm = 0;           ///< Final height, in centimetres.
    std::string CloneDate;              ///< Date cut as a clone.
    std::string TransplantDate;         ///< Date transplanted.
    std::string FlipDate;               ///< Date switched to flowering.
    std::string HarvestDate;            ///< Date harvested.
    std::string Notes;                  ///< Free notes.

    /// Reads the plant with the UUID `uuid` into this record. After `false`, this record is unchanged.
    /// @see PlantRepository::GetPlant
    bool Load(PlantRepository& repository, const std::string& uuid);
    /// Stores this record: creates it if `ID` is 0 and updates it otherwise. After `false`, this record is unchanged.
    /// @see PlantRepository::CreatePlant, PlantRepository::UpdatePlant
    bool Save(PlantRepository& repository);
    /// Deletes the plant with this `UUID` and all records that belong to it.
    /// @see PlantRepository::DeletePlant
    bool Delete(PlantRepository& repository) const;
    /// Stores a copy of this plant and returns it. If the copy could not be stored, its `ID` is 0.
    /// @see PlantRepository::DuplicatePlant
    Plant Duplicate(PlantRepository& repository) const;
};

/// One strain (cultivar). Plants refer to it by its name.
struct Strain
{
    std::int64_t ID = 0;    ///< Row ID; 0 until the strain is stored.
    std::string Name;       ///< Unique name; names that differ only in case are different names.
    std::string Breeder;    ///< Breeder.
    int FloweringWeeks = 0; ///< Expected flowering time, in weeks.
    std::string Notes;      ///< Free notes.
};

/// One entry of a plant's timeline.
struct PLANTJOURNAL_API PlantEvent
{
    std::int64_t ID = 0;                        ///< Row ID; 0 until the event is stored.
    std::string PlantUUID;                      ///< UUID of the plant.
    std::string EventDate;                      ///< Date of the event.
    PlantEventType Type = PlantEventType::Note; ///< Kind of event.
    std::string Details;                        ///< Free text for the timeline.

    /// Stores this record: creates it if `ID` is 0 and updates it otherwise. After `false`, this record is unchanged.
    /// @see PlantRepository::CreatePlantEvent, PlantRepository::UpdatePlantEvent
    bool Save(PlantRepository& repository);
    /// Deletes the event with this `ID`.
    /// @see PlantRepository::DeletePlantEvent
    bool Delete(PlantRepository& repository) const;
};

/// One feeding or watering. It owns an event on the plant's timeline, which the repository writes.
struct PLANTJOURNAL_API PlantCareEntry
{
    std::int64_t ID = 0;                             ///< Row ID; 0 until the entry is stored.
    std::int64_t TimelineEventID = 0;                ///< Row ID of the event of this entry; 0 for none.
    std::string PlantUUID;                           ///< UUID of the plant.
    std::string CareDate;                            ///< Date of care.
    PlantCareAction Action = PlantCareAction::Water; ///< Feed or water.
    std::string Product;                             ///< Nutrient product.
    double AmountMl = 0;                             ///< Amount given, in millilitres.
    double EC = 0;       ///< Electrical conductivity of the solution, in the unit that the grower uses.
    double PH = 0;       ///< pH of the solution.
    double RunoffMl = 0; ///< Runoff, in millilitres.
    std::string Notes;   ///< Free notes.

    /// Stores this record: creates it if `ID` is 0 and updates it otherwise. After `false`, this record is unchanged.
    /// @see PlantRepository::CreatePlantCareEntry, PlantRepository::UpdatePlantCareEntry
    bool Save(PlantRepository& repository);
    /// Deletes the entry with this `ID` and its event.
    /// @see PlantRepository::DeletePlantCareEntry
    bool Delete(PlantRepository& repository) const;
};

/// The harvest record of a plant. A plant has at most one. It owns an event on the plant's timeline, which the
/// repository writes.
struct HarvestRecord
{
    std::int64_t ID = 0;              ///< Row ID; 0 until the record is stored.
    std::int64_t TimelineEventID = 0; ///< Row ID of the event of this record; 0 for none.
    std::string PlantUUID;            ///< UUID of the plant.
    std::string HarvestDate;          ///< Date of harvest.
    double WetWeightG = 0;            ///< Wet weight, in grams.
    double DryWeightG = 0;            ///< Dry weight, in grams; 0 if not weighed.
    double QualityRating = 0;         ///< Quality, out of 10; 0 if not rated.
    int SeedYield = 0;                ///< Number of seeds harvested.
    std::string CureOutcome;          ///< Result of curing, free text.
    std::string Notes;                ///< Free notes.
};

/// Counts and averages of the plants of one strain. Computed by a query, never stored.
struct StrainSummary
{
    std::int64_t StrainID = 0;    ///< Row ID of the strain.
    std::string StrainName;       ///< Name of the strain.
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
    double AverageDryWeightG = 0; ///< Mean of the dry weights that are not 0, in grams; 0 if there are none.
    double AverageQuality = 0;    ///< Mean of the quality ratings that are not 0; 0 if there are none.
};

/// A reference to a photo of a plant. The library never reads, writes or deletes the image file.
struct PLANTJOURNAL_API PlantPhoto
{
    std::int64_t ID = 0;   ///< Row ID; 0 until the photo is stored.
    std::string UUID;      ///< Permanent identifier; updates and deletes use it as the key.
    std::string PlantUUID; ///< UUID of the plant.
    std::string PhotoDate; ///< Date taken.
    std::string FilePath;  ///< Path of the image file.
    std::string Caption;   ///< Caption.

    /// Stores this record: creates it if `ID` is 0 and updates it otherwise. After `false`, this record is unchanged.
    /// @see PlantRepository::CreatePlantPhoto, PlantRepository::UpdatePlantPhoto
    bool Save(PlantRepository& repository);
    /// Deletes the photo with this `UUID`.
    /// @see PlantRepository::DeletePlantPhoto
    bool Delete(PlantRepository& repository) const;
};

/// A health problem seen on a plant.
struct PlantHealthObservation
{
    std::int64_t ID = 0;         ///< Row ID; 0 until the observation is stored.
    std::string PlantUUID;       ///< UUID of the plant.
    std::string ObservationDate; ///< Date observed.
    std::string Issue;           ///< The problem seen.
    int Severity = 1;            ///< From 1 (slight) to 5 (severe).
    std::string Treatment;       ///< Treatment applied.
    std::string Notes;           ///< Free notes.
};

/// A journal entry of a plant.
struct PlantJournalEntry
{
    std::int64_t ID = 0;                                   ///< Row ID; 0 until the entry is stored.
    std::string PlantUUID;                                 ///< UUID of the plant.
    std::string EntryDate;                                 ///< Date of the entry.
    PlantJournalType Type = PlantJournalType::Observation; ///< Kind of entry.
    std::string Details;                                   ///< Free text.
};
