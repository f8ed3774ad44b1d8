#include "transfer/imported.h"

#include "record/text.h"
#include "terminal/printable.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace
{

std::string TableNames()
{
    std::vector<std::string> names;
    const ImportedTables none;
    ForEachTable(none,
                 [&]<typename Record>(const ImportedTable<Record>&) { names.emplace_back(Describe<Record>().Table); });
    return Joined(names, ", ");
}

// Makes records of raw rows.
class RecordReader : public RawRowReceiver
{
  public:
    RecordReader(ImportedTables& tables, ImportMessages& messages) : Tables(tables), Messages(messages) {}

    void BeginTable(const std::string& name, const SourcePointer& file) override
    {
        AddRowToTable = nullptr;
        ForEachTable(Tables,
                     [&]<typename Record>(ImportedTable<Record>& table)
                     {
                         if (name != Describe<Record>().Table)
                             return;
                         table.Given = true;
                         table.File = file;
                         AddRowToTable = [this, &table](const RawRow& row) { AddRecord(row, table); };
                     });
        if (!AddRowToTable)
            Messages.Errors.push_back(file->Place(0) + ": " + InQuotes(Printable(name)) +
                                      " is not a table of the journal; the tables are " + TableNames());
    }

    void AddRow(const RawRow& row) override
    {
        if (AddRowToTable)
            AddRowToTable(row);
    }

  private:
    template <typename Record> void AddRecord(const RawRow& row, ImportedTable<Record>& table)
    {
        const std::vector<Field<Record>>& fields = Describe<Record>().Fields;
        ImportedRow<Record>& imported = table.Rows.emplace_back();
        imported.Offset = row.Offset;
        imported.FieldOffsets.assign(fields.size(), NotGiven);
        const auto addError = [&](const RawCell& cell, const std::string& reason)
        { Messages.Errors.push_back(table.File->Place(cell.Offset) + ": " + reason); };
        for (const RawCell& cell : row.Cells)
        {
            const auto field = std::find_if(fields.begin(), fields.end(),
                                            [&](const Field<Record>& known) { return cell.Field == known.Name; });
            const auto index = static_cast<std::size_t>(field - fields.begin());
            if (field == fields.end() && BelongsToPlant<Record> && cell.Field == "Plant")
                AddPlantName(cell, table);
            else if (field == fields.end())
                addError(cell, std::string(Describe<Record>().Table) + " has no field " +
                                   InQuotes(Printable(std::string(cell.Field))));
            else if (imported.FieldOffsets[index] != NotGiven)
                addError(cell, std::string(field->Name) + " occurs twice");
            else
            {
                imported.FieldOffsets[index] = cell.Offset;
                SetField(*field, cell, *table.File, imported.Value);
            }
        }
    }

    // Keeps the name of the last row's plant.
    template <typename Record> void AddPlantName(const RawCell& cell, ImportedTable<Record>& table)
    {
        const std::size_t row = table.Rows.size() - 1;
        if (!table.PlantNames.empty() && table.PlantNames.back().Row == row)
            Messages.Errors.push_back(table.File->Place(cell.Offset) + ": Plant occurs twice");
        else if (!cell.Text.empty())
            table.PlantNames.push_back({row, std::string(cell.Text), cell.Offset});
    }

    template <typename Record>
    void SetField(const Field<Record>& field, const RawCell& cell, const SourceFile& file, Record& record)
    {
        const auto place = [&] { return file.Place(cell.Offset) + ": " + field.Name + ": "; };
        Text = cell.Text;
        try
        {
            if (Text.find('\0') != std::string::npos)
                throw BadValue("contains a zero byte");
            if (!Text.empty() ||
                !IsNumber(ValueIn<Record>(field, std::as_const(record)))) // a number without a text keeps its default
                ParseField(Text, field, record);
        }
        catch (const BadValue& bad)
        {
            Messages.Errors.push_back(place() + Printable(bad.what()));
        }
    }

    ImportedTables& Tables;
    ImportMessages& Messages;
    std::function<void(const RawRow&)> AddRowToTable;
    std::string Text; // of a cell; a member, so that its memory is used again
};

} // namespace

ImportedTables ReadImportedTables(const std::string& path, ImportMessages& messages)
{
    ImportedTables tables;
    Problems unreadable;
    RecordReader reader(tables, messages);
    ReadSource(path, reader, unreadable);
    messages.Readable = unreadable.empty();
    messages.Errors.insert(messages.Errors.begin(), unreadable.begin(), unreadable.end());
    return tables;
}
