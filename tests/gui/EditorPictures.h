#pragma once

#include "Editor/CanvasView.h"
#include "Editor/EditorWindowController.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// An editor of a picture in a folder of its own.
class EditorPictures : public testing::Test {
protected:
    EditorPictures() { FakePlatform::reset(); }

    std::string path() const { return folder / "picture.png"; }

    std::unique_ptr<EditorWindowController> open() const
    {
        auto editor = EditorWindowController::open(
            QUrl::fromLocalFile(QString::fromStdString(path())), clock.clock());
        if (editor) {
            editor->makeKeyAndOrderFront();
            settle();
        }
        return editor;
    }

    static void mark(EditorWindowController& editor, EditorTool tool, Geometry::Point from,
                     Geometry::Point to)
    {
        CanvasModel& model = editor.canvas().model();
        model.setTool(tool);
        model.mouseDown(from);
        model.mouseDragged(to);
        model.mouseUp();
    }

    static QByteArray copied(EditorWindowController& editor)
    {
        FakePlatform::current().pasteboard.clear();
        editor.copyFlattened();
        const auto& items = FakePlatform::current().pasteboard;
        EXPECT_EQ(items.size(), 1U);
        EXPECT_FALSE(items.at(0).fileURL);
        return items.at(0).png.value_or(QByteArray());
    }

    TemporaryFolder folder;
    mutable FakeClock clock;
};
