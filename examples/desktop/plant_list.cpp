#include "plant_list.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace
{

constexpr int UUIDRole = Qt::UserRole;
constexpr int DetailsRole = Qt::UserRole + 1;

// Draws the details of a plant below its name.
class TwoLines : public QStyledItemDelegate
{
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const override
    {
        return {0, 2 * option.fontMetrics.height() + 14};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool selected = (option.state & QStyle::State_Selected) != 0;
        const QRect area = option.rect.adjusted(10, 7, -10, -7);
        const auto line = [&](Qt::Alignment place, const QVariant& text)
        {
            painter->drawText(area, static_cast<int>((place | Qt::AlignLeft).toInt()),
                              option.fontMetrics.elidedText(text.toString(), Qt::ElideRight, area.width()));
        };
        painter->save();
        if (selected)
            painter->fillRect(option.rect, option.palette.highlight());
        painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
        line(Qt::AlignTop, index.data(Qt::DisplayRole));
        painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::PlaceholderText));
        line(Qt::AlignBottom, index.data(DetailsRole));
        painter->restore();
    }
};

QString DetailsOf(const PlantStatus& plant)
{
    QStringList parts;
    for (const std::string& part : {plant.Strain, std::string(PlantStageName(plant.Stage)), plant.Tent})
        if (!part.empty())
            parts << QString::fromStdString(part);
    return parts.join(QStringLiteral(" · "));
}

} // namespace

PlantList::PlantList() : Filter(new QLineEdit), Plants(new QListWidget)
{
    Filter->setObjectName("filter");
    Filter->setPlaceholderText(tr("Filter"));
    Filter->setToolTip(tr("Shows the plants whose name, strain, stage or tent contains this text."));
    Filter->setClearButtonEnabled(true);
    Plants->setObjectName("plants");
    Plants->setAccessibleName(tr("Plants"));
    Plants->setItemDelegate(new TwoLines(Plants));
    Plants->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(Filter);
    layout->addWidget(Plants);

    connect(Filter, &QLineEdit::textChanged, this, &PlantList::ApplyFilter);
    connect(Plants, &QListWidget::currentItemChanged, this,
            [this](const QListWidgetItem* plant)
            { emit Selected(plant == nullptr ? QString() : plant->data(UUIDRole).toString()); });
}

void PlantList::SetPlants(const std::vector<PlantStatus>& plants)
{
    const QListWidgetItem* before = Plants->currentItem();
    const QString selected = before == nullptr ? QString() : before->data(UUIDRole).toString();
    QListWidgetItem* current = nullptr;
    {
        const QSignalBlocker blocker(Plants);
        Plants->clear();
        for (const PlantStatus& plant : plants)
        {
            auto* item = new QListWidgetItem(QString::fromStdString(plant.Name), Plants);
            item->setData(UUIDRole, QString::fromStdString(plant.PlantUUID));
            item->setData(DetailsRole, DetailsOf(plant));
            if (item->data(UUIDRole) == selected)
                current = item;
        }
        ApplyFilter();
        Plants->setCurrentItem(current);
    }
    if (current != nullptr)
        return;
    if (Plants->count() > 0)
        Plants->setCurrentRow(0); // emits Selected
    else
        emit Selected(QString());
}

void PlantList::ApplyFilter()
{
    for (int row = 0; row < Plants->count(); ++row)
    {
        QListWidgetItem* plant = Plants->item(row);
        const QString text = plant->text() + '\n' + plant->data(DetailsRole).toString();
        plant->setHidden(!text.contains(Filter->text(), Qt::CaseInsensitive));
    }
}
