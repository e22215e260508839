#pragma once

#include "Support/Result.h"

/// Becomes the program that makes movies, which lies beside this one, with the same words: the
/// process stays the same, and so do its signals. One of those that end a movie, when it comes in
/// the middle of this, waits for that program.
///
/// Returns only when it fails. `words` are main's own.
Failure becomeMovieProgram(char** words);
