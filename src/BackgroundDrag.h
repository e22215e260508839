#pragma once

#include "Support/Geometry.h"

#include <QObject>

#include <functional>
#include <optional>

/// Lets the user drag a panel by its background, with the left button. Whatever of the panel's
/// takes presses itself is none.
class BackgroundDrag : public QObject {
    Q_OBJECT

public:
    /// Watches the events of `panel`, which outlives this. `move` is called with how far the panel
    /// is to go, in global points.
    BackgroundDrag(QObject& panel, std::function<void(Geometry::Point by)> move);

    bool eventFilter(QObject* panel, QEvent* event) override;

private:
    void follow();

    std::function<void(Geometry::Point by)> m_move;
    std::optional<Geometry::Point> m_pointer; // where it was last, while it drags
};
