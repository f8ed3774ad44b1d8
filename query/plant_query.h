/// @file plant_query.h
/// Questions across the plants of an open journal: what was done, how the plants are, what care they got, how harvests
/// compare.
///
/// Each function reads from one transaction: the caller's own where one is open on the connection, otherwise one that
/// the function opens and closes, so that the figures of an answer agree with each other. No function writes to the
/// journal. Each fills `out` and returns an empty error, or returns an error and leaves `out` empty. A reading that
/// breaks off, for example because another process holds a lock for longer than 2.5 seconds, is an error: no answer is
/// incomplete.
///
/// Threads: as for `PlantRepository`; use a database from one thread at a time. Exceptions: the functions throw only
/// `std::bad_alloc` and the exceptions of a callback. They close their transaction then, too.
///
/// Dates: a date of the form `YYYY-MM-DD` that is a day of the calendar counts as a day. Dates of other forms are
/// compared as texts, as the lists of `PlantRepository` compare them, but no number of days is computed from them.
/// Texts are read up to their first zero byte. An argument may be a member of the `out` of the same call.
///
/// @code
/// std::vector<PlantStatus> plants;
/// if (const PlantQueryResult result = QueryPlantStatus(journal, {}, PlantEventCurrentDate(), plants); !result)
///     std::cerr << result.Error << '\n';
/// for (const PlantStatus& plant : plants)
///     std::cout << plant.Name << ": last watered on " << plant.LastWaterDate << '\n';
/// @endcode
#pragma once

#include "plant_database.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Marks the functions that the shared library exports. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_QUERY_API __attribute__((visibility("default")))
#elif defined(plantjournal_query_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_QUERY_API __declspec(dllexport)
#else
#define PLANTJOURNAL_QUERY_API
#endif

/// The result of a query.
struct PlantQueryResult
{
    /// Empty where the query succeeded. Otherwise the step and the reason: `reading the care entries: database is
    /// locked`.
    std::string Error;

    /// Whether the query succeeded.
    explicit operator bool() const { return Error.empty(); }
};

/// A set of plants. A plant is in the set if it matches every list below that is not empty. The default is every plant.
struct PlantSet
{
    std::vector<std::string> UUIDs;   ///< The plants with these UUIDs. An unknown UUID matches no plant.
    std::vector<std::string> Strains; ///< The plants of these strains. Letters must match exactly.
    std::vector<std::string> Tents;   ///< The plants in these tents. Letters must match exactly.
    std::vector<PlantStage> Stages;   ///< The plants that are in these stages now.
};

/// How many values there are, and what they are like. `Mean` is never below `Least` and never above `Most`.
/// An infinite weight, rating, EC or pH does not count.
struct PlantFigures
{
    std::int64_t Number = 0; ///< The number of values. The other members are 0 where it is 0.
    double Mean = 0;         ///< The mean of the values.
    double Least = 0;        ///< The least value.
    double Most = 0;         ///< The greatest value.
};

/// @name Timeline and activity
/// @{

/// The record that an activity comes from.
enum class PlantActivityRecord : std::int32_t
{
    Plant,             ///< A date in the plant's own record.
    Event,             ///< A `PlantEvent` that no care entry and no harvest record of the plant owns.
    CareEntry,         ///< A `PlantCareEntry`; its event is not listed again.
    HarvestRecord,     ///< A `HarvestRecord`; its event is not listed again.
    JournalEntry,      ///< A `PlantJournalEntry`.
    HealthObservation, ///< A `PlantHealthObservation`.
    Photo              ///< A `PlantPhoto`.
};

/// The name of the enumerator; "Plant" for any other number.
PLANTJOURNAL_QUERY_API const char* PlantActivityRecordName(PlantActivityRecord record);

/// One thing that happened to a plant.
struct PlantActivity
{
    std::string Date; ///< The date of the record.
    /// The stored name of the event type, care action or journal type; `Harvest`, `Health` or `Photo` for these
    /// records; `Sown`, `Clone`, `Transplant`, `Flip` or `Harvest` for a date of the plant.
    std::string Kind;
    std::string Text;                                        ///< What the record says, in one text; may be empty.
    std::string PlantUUID;                                   ///< The UUID of the plant.
    std::string PlantName;                                   ///< The name of the plant.
    PlantActivityRecord Record = PlantActivityRecord::Plant; ///< The record that the activity comes from.
    std::int64_t RowID = 0;                                  ///< The row ID of that record in its table.
};

/// Lists everything dated of one plant, newest first. Activities of one date are sorted by `Record`, the last
/// enumerator first, then by row ID, highest first. If the plant's own dates are equal, they are listed as `Harvest`,
/// `Flip`, `Transplant`, `Clone`, `Sown`.
///
/// A date in the plant's own record is listed only where no other activity of the plant has the same date and kind. The
/// text of a care entry is that of PlantRepository::CareTimelineDetails(). The parts of other texts are separated by
/// ` | `: weights, seeds, quality, cure outcome and notes of a harvest record, as in the details of its event; issue
/// with severity, treatment and notes of a health observation; path and caption of a photo. A stored name that is
/// unknown is read as PlantRepository reads it.
///
/// An unknown `plantUUID` gives an empty list.
///
/// Cost: proportional to the number of the plant's records.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantTimeline(PlantDatabase& database, const std::string& plantUUID,
                                                           std::vector<PlantActivity>& out);

/// The order of a list of activities.
enum class PlantActivityOrder : std::int32_t
{
    NewestFirst, ///< As QueryPlantTimeline() sorts. Plants are not kept apart.
    OldestFirst  ///< The reverse.
};

/// Selects activities. The default selects all.
struct PlantActivityFilter
{
    PlantSet Plants;                ///< The plants.
    std::vector<std::string> Kinds; ///< The kinds, by their exact names; empty for all.
    std::string From;               ///< The first date; empty for no limit. Dates are compared as texts.
    /// The last date; empty for no limit. A date that begins with this text is included, so `2025-03` includes all of
    /// March.
    std::string To;
    /// A part of `Kind` or `Text`; empty for no limit. Upper and lower case ASCII letters are equal.
    std::string Text;
    /// Where it is set, `Text` is searched in the folded texts instead: the function returns a text in the form in
    /// which equal letters are equal bytes, for example without case in every alphabet. It must not use the database.
    std::function<std::string(const std::string& text)> Fold;
    PlantActivityOrder Order = PlantActivityOrder::NewestFirst; ///< The order.
    std::int64_t AtMost = 0; ///< How many activities to return, the first ones in `Order`; 0 or less for all.
};

/// Lists the activities of several plants.
///
/// Cost: no index of a journal begins with a date. With `From` or `To`, the function searches the indexes of the
/// records once for each plant and kind of record, and reads the records between the dates. Without them, it reads
/// every record of the plants. If it finds events, it also reads the care entries of these plants between the dates,
/// which may own the events, and all care entries of each plant that has an event without an owner among these. `Text`
/// and `AtMost` do not reduce what is read.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantActivity(PlantDatabase& database, const PlantActivityFilter& filter,
                                                           std::vector<PlantActivity>& out);

/// How many activities of a kind there are on a day.
struct PlantCalendarDay
{
    std::string Date;        ///< The date.
    std::string Kind;        ///< As in `PlantActivity`.
    std::int64_t Number = 0; ///< The number of activities; never 0.
};

/// Counts activities per date and kind, sorted by date, oldest first, and then by kind. `Order` and `AtMost` of the
/// filter have no effect. Cost: as QueryPlantActivity().
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantCalendar(PlantDatabase& database, const PlantActivityFilter& filter,
                                                           std::vector<PlantCalendarDay>& out);

/// @}
/// @name Status
/// @{

/// How a plant is on a day, `today`. A member without a value is not known.
///
/// Records dated after `today` are left out; a date that begins with `today`, for example one with a time of day, is
/// not after it. A number of days is known if both dates are days and the second is not the earlier one. Where "or
/// else" names another date, it is used only if the first is empty. A first date that is not a calendar day is used.
struct PlantStatus
{
    std::string PlantUUID;              ///< The UUID of the plant.
    std::string Name;                   ///< The name of the plant.
    std::string Strain;                 ///< The strain of the plant.
    std::string Tent;                   ///< Where the plant stands.
    PlantStage Stage = PlantStage::Veg; ///< The stage of the plant.
    /// Days from `SeedDate`, or else `CloneDate`, to `today`, or to `HarvestDate` if that is earlier.
    std::optional<std::int64_t> AgeDays;
    /// The date on which the stage began: the plant's own date for it (`SeedDate` for Seed, `CloneDate` for Clone,
    /// `FlipDate` for Flower, `HarvestDate` for Dry and Harvested), or else the date of its newest event that begins
    /// the stage: `Stage` with the stage's name as details, `Flip` for Flower, `Clone` for Clone, `Harvest` for Dry and
    /// Harvested. Empty if neither exists.
    std::string StageDate;
    std::optional<std::int64_t> StageDays; ///< Days from `StageDate` to `today`.
    /// Days from `FlipDate`, or else from the newest `Flip` event, to `today`, or to `HarvestDate` if that is earlier.
    std::optional<std::int64_t> FlipDays;
    std::string LastFeedDate;  ///< The date of the newest care entry that is a feeding; empty if there is none.
    std::string LastWaterDate; ///< The date of the newest care entry that is a watering; empty if there is none.
    /// Health observations of the last 30 days, `today` included: the newest of each issue, newest first. Issues that
    /// differ only in the case of ASCII letters are one issue.
    std::vector<PlantHealthObservation> Health;
    /// The usual number of days between two days of care: the median gap between the last six days on which the plant
    /// was fed or watered. Without a value if there are fewer than two such days.
    std::optional<double> CareGapDays;
    /// The day on which care is due: the last day of care plus `CareGapDays`, rounded up to whole days. Empty without
    /// `CareGapDays`, and in the stages after Flower.
    std::string DueDate;
};

/// Returns the status of each plant of the set, sorted as PlantRepository::ListPlants() sorts: by strain, then by name.
///
/// Cost: every plant is read, or only those of `UUIDs` where it is not empty, and for each plant of the set a few of
/// its newest records. Where the newest feeding, the newest watering, the begin of the stage or the flip is not among
/// them, the function reads all care entries or all events of the plant. The number of records of other plants has no
/// effect.
///
/// `today` is the day to compute from, `YYYY-MM-DD`; usually PlantEventCurrentDate(). Any other text is an error.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantStatus(PlantDatabase& database, const PlantSet& plants,
                                                         const std::string& today, std::vector<PlantStatus>& out);

/// @}
/// @name Totals of care
/// @{

/// What the rows of totals are.
enum class PlantTotalGroup : std::int32_t
{
    All,    ///< One row for all care entries.
    Plant,  ///< One row a plant.
    Strain, ///< One row a strain.
    Tent,   ///< One row a tent: where the plant stands now.
    Product ///< One row a product.
};

/// The length of time that a row of totals covers.
enum class PlantPeriod : std::int32_t
{
    All,  ///< All time.
    Day,  ///< A day.
    Week, ///< A week, from Monday to Sunday.
    Month ///< A month.
};

/// Selects care entries and says how to add them up. The default adds up all of them in one row.
struct PlantTotalFilter
{
    PlantSet Plants;                              ///< The plants.
    std::vector<PlantCareAction> Actions;         ///< The actions; empty for all.
    std::string From;                             ///< As in `PlantActivityFilter`.
    std::string To;                               ///< As in `PlantActivityFilter`.
    PlantTotalGroup Group = PlantTotalGroup::All; ///< What the rows are.
    PlantPeriod Period = PlantPeriod::All;        ///< The length of time of a row.
};

/// The sums of some care entries.
struct PlantTotal
{
    std::string Period; ///< The day, the Monday of the week, or the month as `YYYY-MM`. Empty for all time, and for the
                        ///< entries whose date is not a day of the calendar.
    std::string Key;    ///< The plant's UUID, or the strain, tent or product; empty for all, and where there is none.
    std::string Name;   ///< The plant's name; otherwise as `Key`.
    std::int64_t Feedings = 0;  ///< The number of entries that are feedings.
    std::int64_t Waterings = 0; ///< The number of entries that are waterings.
    double AmountMl = 0;        ///< The sum of the amounts, in millilitres.
    double RunoffMl = 0;        ///< The sum of the run-off, in millilitres.
    PlantFigures EC;            ///< The EC of the entries that have it: those above 0.
    PlantFigures PH;            ///< The pH of the entries that have it: those above 0.
};

/// Adds up care entries, sorted by period, oldest first, then by name and key. Upper and lower case ASCII letters of
/// names sort as equal. Without an entry there is no row.
///
/// Cost: as QueryPlantActivity() for care entries.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantTotals(PlantDatabase& database, const PlantTotalFilter& filter,
                                                         std::vector<PlantTotal>& out);

/// @}
/// @name Comparison of harvests
/// @{

/// A set of plants to compare, under a name.
struct PlantComparedSet
{
    std::string Name; ///< The name; it is only written back.
    PlantSet Plants;  ///< The plants.
    /// Where this or `To` is not empty, only the plants that have a date of harvest and whose date is not before this.
    std::string From = {};
    std::string To = {}; ///< The last date of harvest; empty for no limit. As in `PlantActivityFilter`.
};

/// The plants of a set and their harvests. A weight or rating counts if it is above 0; 0 means that it was not entered.
/// A span of days counts where both dates are days and the harvest is not the earlier one. The harvest's date is that
/// of the harvest record, or else, where that is empty, the plant's own.
struct PlantComparison
{
    std::string Name;                ///< The name of the set.
    std::int64_t Plants = 0;         ///< The number of plants.
    std::int64_t Harvested = 0;      ///< The number of plants with a harvest record.
    PlantFigures DaysFromSeed;       ///< Days from sowing to harvest.
    PlantFigures DaysFromClone;      ///< Days from cutting to harvest.
    PlantFigures DaysFromTransplant; ///< Days from transplanting to harvest.
    PlantFigures DaysFromFlip;       ///< Days from the switch to flowering to harvest.
    PlantFigures WetWeightG;         ///< Wet weights, in grams.
    PlantFigures DryWeightG;         ///< Dry weights, in grams.
    PlantFigures DryingLossPercent;  ///< Loss on drying, in percent of the wet weight, of plants with both weights.
    PlantFigures Quality;            ///< Quality ratings.
    PlantFigures MlPerGram;          ///< Millilitres of care for each gram of dry weight, of plants that have both.
};

/// Compares sets of plants, in the order given. A plant may be in several sets.
///
/// Cost: every plant is read, the harvest record of each plant in the sets, and the care entries of those that have a
/// dry weight.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantComparison(PlantDatabase& database,
                                                             const std::vector<PlantComparedSet>& sets,
                                                             std::vector<PlantComparison>& out);

/// @}
/// @name Lineage
/// @{

/// A plant among the ancestors or descendants of another.
struct PlantRelative
{
    std::string UUID;                   ///< The UUID of the plant.
    std::string Name;                   ///< The name of the plant.
    std::string Strain;                 ///< The strain of the plant.
    std::string MotherPlantUUID;        ///< The UUID of its mother; empty for none.
    PlantStage Stage = PlantStage::Veg; ///< The stage of the plant.
    std::int64_t Generation = 0;        ///< -1 for the mother, -2 for her mother; 1 for a clone, 2 for a clone's clone.
    std::optional<HarvestRecord> Harvest; ///< The harvest record, if there is one.
};

/// The relatives of a plant.
struct PlantLineage
{
    std::vector<PlantRelative> Ancestors; ///< The mother first, then her mother, and so on.
    /// Each followed by its own descendants. Siblings are sorted by name, without regard to the case of ASCII letters,
    /// and then by row ID.
    std::vector<PlantRelative> Descendants;
};

/// Returns the ancestors and descendants of a plant. Each plant appears at most once, and the plant itself never, even
/// where a damaged journal has a cycle of mothers: the plants of the cycle are then ancestors.
///
/// Cost: every plant is read, and the harvest record of each relative.
///
/// An unknown `plantUUID` gives an empty lineage.
PLANTJOURNAL_QUERY_API PlantQueryResult QueryPlantLineage(PlantDatabase& database, const std::string& plantUUID,
                                                          PlantLineage& out);

/// @}
