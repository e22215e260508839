// Any bytes as a sidecar. Nothing may be read beyond them or crash; what is accepted has to be JSON
// for Qt too, and has to come back the same after it is written.

#include "Editor/Sidecar.h"
#include "Support/JsonReader.h"

#include <QJsonDocument>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace {

void require(bool is, const char* what)
{
    if (is)
        return;
    std::fprintf(stderr, "sidecar: %s\n", what);
    std::abort();
}

bool isJson(QByteArrayView text)
{
    JsonReader reader(text);
    return reader.skip() && reader.isAtEnd();
}

/// Qt's reader takes all that JSON has, except for what is very deep and numbers that it cannot
/// hold.
bool isJsonForQt(const QByteArray& text)
{
    QJsonParseError error;
    QJsonDocument::fromJson('[' + text + ']', &error);
    return error.error == QJsonParseError::NoError || error.error == QJsonParseError::DeepNesting ||
           error.error == QJsonParseError::IllegalNumber;
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    // A copy of its exact size, so that reading past it is noticed.
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Result<Sidecar> sidecar = Sidecar::decode(text);
    const bool hasMark = text.startsWith("\xEF\xBB\xBF");
    if (isJson(text))
        require(hasMark || isJsonForQt(text), "not JSON for Qt");
    else
        require(!sidecar, "accepted what is not JSON");
    if (!sidecar)
        return 0;
    const Result<QByteArray> written = Sidecar::encode(*sidecar);
    require(static_cast<bool>(written), "cannot be written");
    const Result<Sidecar> again = Sidecar::decode(*written);
    require(again && *again == *sidecar, "reads back as something else");
    const Result<QByteArray> twice = Sidecar::encode(*again);
    require(twice && *twice == *written, "is written in another way the second time");
    return 0;
}
