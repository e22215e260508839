#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

/// A sound server of its own whose microphone hears what is played on it; up when the constructor
/// returns and gone with the object. No device of this machine, no server of this user is touched.
class SoundServer {
public:
    enum class Kind { PulseAudio, PipeWire };

    /// Throws std::runtime_error when the server does not come up.
    explicit SoundServer(Kind kind = Kind::PulseAudio);
    ~SoundServer();

    /// What PULSE_SERVER has to be.
    std::string address() const;

    /// Ends it at once, with its clients still there.
    void kill();
    /// Starts it, after a kill(), at the same address.
    void start();

    /// Plays silence for some seconds, or a tone, and returns when that has been handed over.
    class Player {
    public:
        /// Hands over so many seconds ahead of time: as long as that the machine may be busy.
        explicit Player(const SoundServer& server, double ahead = 0.02);
        ~Player();
        Player(const Player&) = delete;
        Player& operator=(const Player&) = delete;

        void playSilence(double seconds) { play(seconds, 0); }
        void playTone(double seconds) { play(seconds, 0.4F); }

        /// In how many seconds what is handed over next will be heard.
        double delay() const;

    private:
        void play(double seconds, float loudness);

        struct Stream;
        std::unique_ptr<Stream> m_stream;
    };

private:
    void startPulseAudio();
    void startPipeWire();
    void run(const std::vector<std::string>& words);
    std::string socket() const;

    Kind m_kind;
    TemporaryFolder m_folder;
    std::vector<std::unique_ptr<ChildProcess>> m_processes; // the first was started first
};
