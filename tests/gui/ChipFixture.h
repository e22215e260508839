#pragma once

#include "ChipManager.h"
#include "ChipPanel.h"
#include "ChipView.h"
#include "ChromeButton.h"
#include "Preferences.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/Printers.h"

#include <QGuiApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// A manager on a desktop of two screens, and files that are pictures of any size one wants. A is
/// the primary screen; B stands right of it, its foot 100 points higher.
class ChipFixture : public testing::Test {
protected:
    ChipFixture()
    {
        FakePlatform::reset();
        const auto handles = QGuiApplication::screens();
        auto& platform = FakePlatform::current();
        platform.screens = {
            {QStringLiteral("A"), {0, 0, 1440, 900}, {0, 0, 1440, 875}, 1, handles.at(0)},
            {QStringLiteral("B"), {1440, 100, 1280, 800}, {1440, 140, 1280, 760}, 1, handles.at(1)},
        };
        platform.mouse = {200, 200};
        manager = makeManager();
    }

    std::unique_ptr<ChipManager> makeManager()
    {
        auto made = std::make_unique<ChipManager>(
            preferences, clock.clock(), [this](const QUrl& url, auto completion) {
                if (holdsBack)
                    heldBack[url.fileName()] = std::move(completion);
                else
                    completion(content);
            });
        made->onEdit = [this](const QUrl& url) { edited.append(url); };
        return made;
    }

    static QUrl file(const QString& name)
    {
        return QUrl::fromLocalFile(QStringLiteral("/") + name);
    }

    /// Shows a picture of a size (points), and lets all chips come to rest.
    ChipPanel& add(const QString& name, Geometry::Size size = {200, 100})
    {
        content = contentOf(size);
        manager->add(file(name));
        rest();
        return *manager->panels().back();
    }

    static ChipContent contentOf(Geometry::Size size)
    {
        QImage picture(static_cast<int>(size.width), static_cast<int>(size.height),
                       QImage::Format_RGB32);
        picture.fill(QColor(40, 90, 200));
        return {picture, size, std::nullopt};
    }

    /// Waits until no chip moves any more.
    void rest()
    {
        std::vector<Geometry::Point> before;
        ASSERT_TRUE(runUntil([&] {
            QTest::qWait(40); // a few frames of an animation
            auto now = origins();
            return std::exchange(before, now) == now;
        }));
    }

    std::vector<Geometry::Point> origins() const
    {
        std::vector<Geometry::Point> result;
        for (const auto& panel : manager->panels())
            result.push_back(panel->frame().origin());
        return result;
    }

    QStringList names() const
    {
        QStringList result;
        for (const auto& panel : manager->panels())
            result.append(panel->view().fileURL().fileName());
        return result;
    }

    static ChromeButton* button(ChipPanel& panel, const char* tip)
    {
        for (ChromeButton* child : panel.findChildren<ChromeButton*>()) {
            if (child->toolTip() == QString::fromUtf8(tip))
                return child;
        }
        return nullptr;
    }

    QTemporaryDir folder;
    Preferences preferences{std::make_unique<QSettings>(
        folder.filePath(QStringLiteral("store.ini")), QSettings::IniFormat)};
    FakeClock clock;
    std::optional<ChipContent> content;
    /// Whether files take their time to load.
    bool holdsBack = false;
    std::map<QString, std::function<void(const std::optional<ChipContent>&)>> heldBack;
    QList<QUrl> edited;
    std::unique_ptr<ChipManager> manager;
};
