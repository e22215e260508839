#pragma once

#include "Support/OutputFile.h"

/// The tool's file at `path`: also the signals SIGHUP, SIGINT and SIGTERM leave no hidden one
/// behind. It fails, among other reasons, when something other than a regular file or a symbolic
/// link stands there, which is not touched before the file is published.
///
/// One at a time in a process: the signals' handlers know of one.
Result<std::unique_ptr<OutputFile>> newFile(const std::string& path,
                                            OutputFile::Kind kind = OutputFile::Kind::Nameless);
