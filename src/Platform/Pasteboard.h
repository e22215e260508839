#pragma once

#include <QByteArray>
#include <QUrl>

#include <optional>

namespace Platform {

/// One thing to paste. What is absent is not offered.
struct PasteboardItem {
    /// The bytes of a PNG file, offered as they stand.
    std::optional<QByteArray> png;
    /// A file that the receiver may read, or copy in a file manager.
    std::optional<QUrl> fileURL;
};

/// Replaces what is on the general pasteboard.
void writePasteboard(const PasteboardItem& item);

/// To be called right before something is dragged to another program.
void prepareDrag();

} // namespace Platform
