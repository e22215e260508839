#pragma once

#include "SelectionSession.h"

#include "SelectionView.h"
#include "SelectionWindow.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/Printers.h"

#include <QGuiApplication>
#include <QTest>

#include <gtest/gtest.h>

/// A desktop of two screens: A is the primary, B stands right of it with its foot 100 points
/// higher.
class SelectionSessionFixture : public testing::Test {
protected:
    void SetUp() override
    {
        FakePlatform::reset();
        auto& platform = FakePlatform::current();
        const auto handles = QGuiApplication::screens();
        ASSERT_EQ(handles.size(), 2);
        platform.screens = {
            {QStringLiteral("A"), {0, 0, 1440, 900}, {0, 0, 1440, 900}, 1, handles[0]},
            {QStringLiteral("B"), {1440, 100, 1280, 800}, {1440, 100, 1280, 800}, 1, handles[1]},
        };
        platform.mouse = {200, 200};
    }

    void TearDown() override
    {
        SelectionSession::current.reset();
        session.reset();
        settle();
    }

    void open(SelectionMode mode)
    {
        const SelectionHooks hooks = {[] { return false; }, [] {}, [] { return false; }, [] {}};
        session = SelectionSession::open(mode, hooks, clock.clock(),
                                         [this](const auto& result) { results.push_back(result); });
        SelectionSession::current = session;
        settle();
    }

    SelectionWindow& window(std::size_t i) { return *session->windows().at(i); }
    SelectionView& view(std::size_t i) { return window(i).view(); }

    /// Drags with the left button; points are Qt's, from the view's top left.
    static void drag(SelectionView& on, QPoint from, QPoint to)
    {
        QTest::mousePress(&on, Qt::LeftButton, {}, from);
        QTest::mouseMove(&on, (from + to) / 2);
        QTest::mouseMove(&on, to);
        QTest::mouseRelease(&on, Qt::LeftButton, {}, to);
    }

    using Results = std::vector<std::optional<SelectionResult>>;
    static Results only(SelectionResult::Kind kind, Geometry::Rect rect)
    {
        return {SelectionResult{kind, rect}};
    }

    using Kind = SelectionResult::Kind;
    FakeClock clock;
    std::shared_ptr<SelectionSession> session;
    Results results;
};
