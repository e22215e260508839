#pragma once

#include <QStringList>
#include <QWidget>

/// A row of short titles of which one is chosen.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    /// `names` are what screen readers call the segments. The first is selected.
    SegmentedControl(const QStringList& titles, const QStringList& names,
                     QWidget* parent = nullptr);

    int selectedSegment() const { return m_selected; }
    void setSelectedSegment(int segment);

Q_SIGNALS:
    /// The user has chosen a segment, perhaps the one that was.
    void chosen(int segment);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_count;
    int m_selected = 0;
};
