/// @file plant_validation.h
/// What is wrong with a record, why an operation returned `false`, and what a form needs: the values of the
/// enumerations, and dates.
///
/// The functions change nothing: neither the records nor the journal. They throw only `std::bad_alloc`.
///
/// Threads: the functions with a PlantDatabase follow the rule of PlantRepository: use a database from one thread at a
/// time. The others may be called from any thread; where they need the present date, the rule of
/// PlantEventCurrentDate() applies.
///
/// @code
/// std::vector<PlantProblem> problems;
/// if (const PlantValidationResult result = Validate(entry, journal, problems); !result)
///     ShowError(result.Error);
/// for (const PlantProblem& problem : problems)
///     ShowBesideField(problem.Field, problem.Kind, problem.Description);
/// if (!repository.CreatePlantCareEntry(entry))
///     ShowError(Explain(journal, entry));
/// @endcode
#pragma once

#include "plant_database.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Marks the functions that the shared library exports. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_VALIDATION_API __attribute__((visibility("default")))
#elif defined(plantjournal_validation_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_VALIDATION_API __declspec(dllexport)
#else
#define PLANTJOURNAL_VALIDATION_API
#endif

/// @name Enumerations
/// The values of each enumeration, in their order.
/// @{

/// All values of `PlantStage`.
inline constexpr std::array PlantStages = {PlantStage::Seed,      PlantStage::Clone,   PlantStage::Veg,
                                           PlantStage::Flower,    PlantStage::Dry,     PlantStage::Cure,
                                           PlantStage::Harvested, PlantStage::Archived};
/// All values of `PlantSex`.
inline constexpr std::array PlantSexes = {PlantSex::Unknown, PlantSex::Female, PlantSex::Male, PlantSex::Hermaphrodite};
/// All values of `PlantEventType`.
inline constexpr std::array PlantEventTypes = {
    PlantEventType::Clone,      PlantEventType::Transplant, PlantEventType::Flip,  PlantEventType::Harvest,
    PlantEventType::Feed,       PlantEventType::Water,      PlantEventType::Stage, PlantEventType::Topped,
    PlantEventType::LSTTrained, PlantEventType::Defoliated, PlantEventType::Note};
/// All values of `PlantCareAction`.
inline constexpr std::array PlantCareActions = {PlantCareAction::Feed, PlantCareAction::Water};
/// All values of `PlantJournalType`.
inline constexpr std::array PlantJournalTypes = {PlantJournalType::Observation, PlantJournalType::Training,
                                                 PlantJournalType::Pruning,     PlantJournalType::Topping,
                                                 PlantJournalType::Defoliation, PlantJournalType::Milestone};
/// @}

/// @name Stored names
/// Return the value with exactly this stored name; nothing for any other text. The `...FromName` functions of plant.h
/// return a default value instead.
/// @{

/// Returns the value of `PlantStage` with this stored name.
PLANTJOURNAL_VALIDATION_API std::optional<PlantStage> ParsePlantStage(const std::string& name);
/// Returns the value of `PlantSex` with this stored name.
PLANTJOURNAL_VALIDATION_API std::optional<PlantSex> ParsePlantSex(const std::string& name);
/// Returns the value of `PlantEventType` with this stored name.
PLANTJOURNAL_VALIDATION_API std::optional<PlantEventType> ParsePlantEventType(const std::string& name);
/// Returns the value of `PlantCareAction` with this stored name.
PLANTJOURNAL_VALIDATION_API std::optional<PlantCareAction> ParsePlantCareAction(const std::string& name);
/// Returns the value of `PlantJournalType` with this stored name.
PLANTJOURNAL_VALIDATION_API std::optional<PlantJournalType> ParsePlantJournalType(const std::string& name);
/// @}

/// @name Dates
/// A date of a record is a text: `YYYY`, `YYYY-MM` or `YYYY-MM-DD`, of the Gregorian calendar. The years are 0000 to
/// 9999.
/// @{

/// A date, in numbers.
struct PlantDate
{
    int Year = 0;  ///< From 0 to 9999.
    int Month = 0; ///< From 1 to 12; 0 for none.
    int Day = 0;   ///< From 1 to 31; 0 for none.
};

/// Reads a date into `out`. After `false`, the text is not a date of the calendar, and `out` is unchanged. The empty
/// text is not a date.
PLANTJOURNAL_VALIDATION_API bool ReadPlantDate(const std::string& text, PlantDate& out);

/// Returns whether the first date is certainly before the second. Only the parts that both have are compared:
/// `2026-04` is before `2026-05-01`, and `2026` is not. Returns `false` if either text is not a date.
PLANTJOURNAL_VALIDATION_API bool PlantDateIsBefore(const std::string& first, const std::string& second);

/// Writes to `out` how many days the second date is after the first; the number is negative if it is before. After
/// `false`, one of the texts is not a day (`YYYY-MM-DD`), and `out` is unchanged.
PLANTJOURNAL_VALIDATION_API bool DaysBetweenPlantDates(const std::string& first, const std::string& second,
                                                       std::int64_t& out);

/// Returns the day that is `days` days after `day`; `days` may be negative. Returns the empty text if `day` is not a
/// day (`YYYY-MM-DD`), or if the result is outside the years 0000 to 9999.
PLANTJOURNAL_VALIDATION_API std::string PlantDatePlusDays(const std::string& day, std::int64_t days);

/// Likewise in months. If the month is too short for the day, returns its last day: one month before `2026-03-31` is
/// `2026-02-28`.
PLANTJOURNAL_VALIDATION_API std::string PlantDatePlusMonths(const std::string& day, std::int64_t months);

/// @}

/// How serious a problem is.
enum class PlantProblemKind : std::int32_t
{
    Refused,    ///< The operation of PlantRepository would return `false`.
    Impossible, ///< The value has no meaning, for example a pH of 15, but would be stored. Refuse it in a front end.
    Unlikely    ///< The value is possible, but probably a mistake. Show a notice in a front end, and store it.
};

/// A problem with one value of a record.
struct PlantProblem
{
    std::string Field;       ///< Name of the field, as in the record: `DryWeightG`.
    PlantProblemKind Kind;   ///< How serious the problem is.
    std::string Description; ///< The reason as a statement, without the value: "the wet weight cannot be negative".
    std::string OtherField;  ///< Another field of the same record that the problem depends on; empty for none.
};

/// @name Validation of a record by itself
/// `Validate` returns the problems of a record: the refused values first, then the others in the order of the fields.
/// It assumes that the record is to be created if its `ID` is 0, and updated otherwise.
///
/// Refused are:
/// - an empty name of a strain, issue of a health observation, or file path of a photo,
/// - an empty `PlantUUID`, and an empty `UUID` of a photo in an update,
/// - a plant that is its own mother, and a mother of a plant without a `UUID` in an update,
/// - a number that is NaN.
///
/// Impossible are:
/// - a date that is neither empty nor one of the forms above,
/// - an infinite number,
/// - a negative amount, electrical conductivity, weight, height or count,
/// - a pH outside 0 to 14, a severity outside 1 to 5, a quality rating outside 0 to 10.
///
/// Unlikely are:
/// - a date in the future,
/// - a date of a record before the plant began,
/// - a transplant, flip or harvest before the plant was sown or cut as a clone, and a harvest before the flip,
/// - an amount or runoff above 100 litres (the unit is the millilitre), and a runoff above the amount,
/// - an electrical conductivity above 20 (the expected unit is mS/cm),
/// - a dry weight above the wet weight,
/// - a final height below the height at the flip,
/// - a flowering time above 52 weeks.
///
/// A 0 that stands for a missing value takes part in no comparison.
///
/// `plant` is the plant of the record: its dates say when it began and flipped. The default has none. `today` is the
/// present date; a later date is in the future.
/// @{

/// Validates a strain by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const Strain& strain);
/// Validates a plant by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const Plant& plant,
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a timeline event by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const PlantEvent& event, const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a care entry by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const PlantCareEntry& entry, const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a harvest record by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const HarvestRecord& record, const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a photo by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const PlantPhoto& photo, const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a health observation by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const PlantHealthObservation& observation,
                                                               const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// Validates a journal entry by itself.
PLANTJOURNAL_VALIDATION_API std::vector<PlantProblem> Validate(const PlantJournalEntry& entry, const Plant& plant = {},
                                                               const std::string& today = PlantEventCurrentDate());
/// @}

/// Whether a journal could be read for a validation.
struct PlantValidationResult
{
    /// Empty where the journal was read. Otherwise the step and the reason: `reading the plants: database is locked`.
    std::string Error;

    /// Whether the journal was read.
    explicit operator bool() const { return Error.empty(); }
};

/// @name Validation of a record in a journal
/// `Validate` writes to `out` the problems of the record by itself, and those that the journal shows. The plant of the
/// record and its dates are read from the journal. After an error, `out` is empty: a reading that breaks off never
/// looks like a record without problems.
///
/// `out` has a problem of the kind `Refused` if, and only if, the operation that stores the record would return `false`
/// because of the record or of the journal's content: the create operation if `ID` is 0, otherwise the update
/// operation. For a harvest record, that is `SaveHarvestRecord` with the plant `PlantUUID`; fill in `PlantUUID` first.
/// In addition to the values that are refused by themselves, these are refused:
/// - a record of an unknown plant in a create, and an unknown mother,
/// - a mother that descends from the plant, or from a cycle of mother links that the journal already has,
/// - in a create, a UUID of a plant or photo that is in use,
/// - a name of a strain that another strain has, and an update of a strain that does not exist,
/// - a second harvest record of a plant,
/// - a `TimelineEventID` of an event that does not exist, where the care entry or harvest record would be stored,
/// - in an update with a `TimelineEventID` of 0, an unknown plant of a care entry or harvest record,
/// - a text that is longer than SQLite permits, usually 1,000,000,000 bytes. The journal is then not searched for
///   other problems. Texts that exceed this length only together are not found.
///
/// An update stores nothing if the row does not exist; it returns `true` then. This is a problem of the kind
/// `Unlikely`, and a NaN is `Impossible` there.
///
/// The settings of the connection are assumed to be those of `PlantDatabase::Open`. A transaction that is open on the
/// connection is not a problem of the record, although some operations return `false` then.
///
/// The functions read from one transaction: the caller's own where one is open on the connection, otherwise one that
/// they open and close. Another program can change the journal before the record is stored.
/// @{

/// Validates a strain in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const Strain& strain, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a plant in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const Plant& plant, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a timeline event in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const PlantEvent& event, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a care entry in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const PlantCareEntry& entry, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a harvest record in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const HarvestRecord& record, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a photo in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const PlantPhoto& photo, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// Validates a health observation in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const PlantHealthObservation& observation,
                                                           PlantDatabase& database, std::vector<PlantProblem>& out);
/// Validates a journal entry in a journal.
PLANTJOURNAL_VALIDATION_API PlantValidationResult Validate(const PlantJournalEntry& entry, PlantDatabase& database,
                                                           std::vector<PlantProblem>& out);
/// @}

/// @name Why an operation returned false
/// `Explain` returns one sentence: why the operation that stores the record returned `false`. It begins with one of:
/// - `refused`: the record is refused. The first problem of the kind `Refused` follows.
/// - `closed`: the database is not open.
/// - `locked`: another process or connection held a lock for longer than the busy timeout.
/// - `read-only`: the journal file or its directory cannot be written.
/// - `moved`: the journal file was moved or deleted while it was open.
/// - `disk full`, `disk error`, `damaged`, `out of memory`: as SQLite reported.
/// - `open transaction`: the operation needs a transaction of its own, and one is open on the connection.
/// - `failed`: another reason of SQLite. Its message follows.
/// - `rolled back; the cause was not recorded`: the operation rolled its transaction back, which replaced SQLite's
///   code. The cause is, for example, another process that was reading when the transaction was committed, a full disk
///   or a read-only directory. If the journal cannot be read at present either, that reason follows.
///
/// Where several causes hold, the sentence names one of them.
///
/// Call `Explain` directly after the `false`. SQLite keeps the code of the last call only, so any other use of the
/// connection, `Validate` and the record's next operation included, replaces the evidence. If SQLite cannot reserve
/// memory for a transaction, the operation leaves no code. The sentence then explains the code of the previous call.
///
/// Pass the record as it was before the operation. `Save` of the records restores it; an operation of PlantRepository
/// may write row IDs back that are not valid after `false`. For a harvest record, `PlantUUID` must be that of the
/// plant. A `TimelineEventID` that equals the last row ID that the connection inserted can come from such an operation.
/// `Explain` then does not report that the event does not exist.
/// @{

/// Explains why a strain was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const Strain& strain);
/// Explains why a plant was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const Plant& plant);
/// Explains why a timeline event was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const PlantEvent& event);
/// Explains why a care entry was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const PlantCareEntry& entry);
/// Explains why a harvest record was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const HarvestRecord& record);
/// Explains why a photo was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const PlantPhoto& photo);
/// Explains why a health observation was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const PlantHealthObservation& observation);
/// Explains why a journal entry was not stored.
PLANTJOURNAL_VALIDATION_API std::string Explain(PlantDatabase& database, const PlantJournalEntry& entry);
/// @}
