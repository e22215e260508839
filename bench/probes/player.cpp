// `bench_player ROUNDS FILE`: opens a video in its editor and drags a handle of its range. Prints,
// in milliseconds: the first opening to its first frame, which loads the libraries; the median of
// the further ones; then the median and the most of from where a handle is drawn to the frame
// there.

#include "Editor/PlayerView.h"
#include "Editor/TrimBar.h"
#include "Editor/TrimStrip.h"
#include "Editor/VideoEditorWindowController.h"
#include "Support/Clock.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

constexpr double patience = 20'000; // milliseconds

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Milliseconds until `done()` holds.
double timeUntil(const QElapsedTimer& timer, const std::function<bool()>& done)
{
    for (;;) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
        const double passed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        if (done())
            return passed;
        if (passed > patience) {
            std::fprintf(stderr, "bench_player: nothing came\n");
            std::exit(1);
        }
    }
}

/// Tells when the player has a new frame on the screen.
class Frames {
public:
    explicit Frames(PlayerView& view)
        : m_view(view)
        , m_inner(view.playback().onPicture)
    {
        view.playback().onPicture = [this] {
            m_inner();
            m_view.repaint();
            ++m_count;
        };
    }
    int count() const { return m_count; }

private:
    PlayerView& m_view;
    std::function<void()> m_inner;
    int m_count = 0;
};

struct Editor {
    explicit Editor(const QUrl& file)
        : controller(VideoEditorWindowController::open(file, {.clock = Clock::system(),
                                                              .openPlayer = Player::open,
                                                              .loader = FilmLoader::system(),
                                                              .canTrim = {},
                                                              .trim = {},
                                                              .exportGIF = {}}))
        , frames(controller->playerView())
    {
        controller->window().show();
    }
    PlayerView& view() { return controller->playerView(); }

    std::unique_ptr<VideoEditorWindowController> controller;
    Frames frames;
};

std::vector<double> dragTimes(Editor& editor, int rounds)
{
    QElapsedTimer timer;
    timer.start();
    timeUntil(timer, [&] { return editor.view().duration().has_value(); });
    editor.controller->trimClicked();
    TrimStrip& strip = editor.view().trimBar().strip();
    timer.restart();
    timeUntil(timer, [&] { return strip.hasAllFrames(); });
    const double length = editor.view().duration().value_or(0);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        // All over the film, at no regular distance from key frames.
        const double part = 0.05 + 0.85 * ((i * 37) % 100) / 100.0;
        const int before = editor.frames.count();
        timer.restart();
        Q_EMIT strip.moved(TrimModel::Handle::start, length * part);
        times.push_back(timeUntil(timer, [&] {
            return editor.frames.count() > before && !editor.view().playback().state().seeking;
        }));
    }
    return times;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.size() == 3 ? arguments[1].toInt() : 0;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: bench_player ROUNDS FILE\n");
        return 2;
    }
    const QUrl file = QUrl::fromLocalFile(arguments[2]);
    std::vector<double> openings;
    std::vector<double> drags;
    for (int i = 0; i <= rounds; ++i) {
        QElapsedTimer timer;
        timer.start();
        Editor editor(file);
        openings.push_back(timeUntil(timer, [&] { return editor.frames.count() > 0; }));
        if (i == rounds)
            drags = dragTimes(editor, 40);
    }
    const double first = openings.front();
    openings.erase(openings.begin());
    std::printf("%.1f %.1f %.1f %.1f\n", first, median(openings), median(drags),
                *std::max_element(drags.begin(), drags.end()));
    return 0;
}
