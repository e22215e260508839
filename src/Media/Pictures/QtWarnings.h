#pragma once

/// What Qt's readers say about broken pictures.
namespace QtWarnings {

/// Silences them, and nothing else of Qt's, for the process. Any thread.
void silence();

} // namespace QtWarnings
