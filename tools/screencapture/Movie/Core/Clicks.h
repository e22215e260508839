#pragma once

#include <vector>

/// Which rings mark mouse buttons going down. Times are seconds since the movie's start, positions
/// whatever the caller counts in.
///
/// A ring goes with the pointer while its button is down and stays where that was let go. Each is
/// seen for a while however short the click.
class Clicks {
public:
    struct Ring {
        int x = 0;
        int y = 0;
        double opacity = 1;

        friend bool operator==(const Ring&, const Ring&) = default;
    };

    void press(int button, double time);
    void release(int button, double time);
    /// Where the pointer is now, for rings that go with it.
    void pointerAt(int x, int y);

    /// What is seen at a time, oldest first. Rings that are over are forgotten: time runs forward.
    std::vector<Ring> at(double time);

private:
    struct Click {
        int button;
        double pressed;
        double end; // when it begins to fade; far away while the button is down
        bool isDown;
        bool isPlaced;
        int x;
        int y;
    };

    std::vector<Click> m_clicks;
};
