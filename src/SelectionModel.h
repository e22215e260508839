#pragma once

#include "Support/Geometry.h"

#include <optional>
#include <variant>

/// The selection on one screen: what the mouse does to it. No widgets, no screen.
///
/// Points and rectangles are in view coordinates: points, y up, origin at the bottom left of the
/// view.
class SelectionModel {
public:
    struct Idle {
        friend bool operator==(Idle, Idle) = default;
    };
    struct Dragging {
        Geometry::Point start;
        friend bool operator==(const Dragging&, const Dragging&) = default;
    };
    struct Moving {
        /// From the selection's origin to where the mouse went down.
        Geometry::Point offset;
        friend bool operator==(const Moving&, const Moving&) = default;
    };
    struct Resizing {
        /// The corner that stays, opposite the one being dragged.
        Geometry::Point anchor;
        friend bool operator==(const Resizing&, const Resizing&) = default;
    };
    /// A selection exists and waits to be moved, resized or confirmed.
    struct Adjusting {
        friend bool operator==(Adjusting, Adjusting) = default;
    };
    using Phase = std::variant<Idle, Dragging, Moving, Resizing, Adjusting>;

    /// What a press of the mouse began.
    enum class Press {
        adjusts,      ///< the selection is being moved or resized
        newSelection, ///< a new rectangle; the caller calls beginDrag once other views are clear
    };

    /// What a release of the mouse ended.
    enum class Release {
        nothing,  ///< no mouse activity was under way
        selected, ///< a drag of at least the minimum size; the phase is still Dragging
        tooSmall, ///< a click or a tiny drag; the phase is still Dragging
        adjusted, ///< a move or a resize; the phase is still Moving or Resizing
    };

    /// The least width and height of a selection.
    static constexpr double minimumSize = 8;
    /// How far from a corner a press grabs it, inclusive.
    static constexpr double cornerRadius = 16;
    /// How far outside the selection a press still moves it.
    static constexpr double moveTolerance = 6;
    /// How far the HUD stays from the view's edges, at least.
    static constexpr double hudEdgeMargin = 12;
    /// How far it stands from the selection.
    static constexpr double hudDistance = 14;

    explicit SelectionModel(Geometry::Size viewSize);

    const Phase& phase() const { return m_phase; }
    template <typename P>
    bool isIn() const
    {
        return std::holds_alternative<P>(m_phase);
    }

    const Geometry::Rect& selectionRect() const { return m_selectionRect; }

    /// The selection when it is at least the minimum size both ways.
    std::optional<Geometry::Rect> usableSelection() const;

    Press mouseDown(Geometry::Point p);
    void beginDrag(Geometry::Point start);
    /// Whether the selection changed.
    bool mouseDragged(Geometry::Point p);
    Release mouseUp() const;

    void enterAdjusting();
    /// No selection, phase Idle.
    void clear();

    /// The corner that stays when a press at `p` grabs the one opposite it; absent when `p` is near
    /// no corner.
    std::optional<Geometry::Point> resizeAnchor(Geometry::Point p) const;

    /// Where the HUD, the bar that goes with the selection, stands: centred below it, above it when
    /// there is no room below. The HUD's bottom left corner, for a size of `hudSize`.
    Geometry::Point hudOrigin(Geometry::Size hudSize) const;

private:
    Geometry::Size m_viewSize;
    Geometry::Rect m_selectionRect;
    Phase m_phase = Idle{};
};
