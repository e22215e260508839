#include "tour/Tour.h"

#include "desktop/harness/Screen.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cstdio>

using Desktop::Outcome;

namespace {

constexpr const char* sheetHead = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Tamrik: the tour</title><style>
body { font: 15px/1.5 Inter, sans-serif; margin: 2rem auto; max-width: 76rem; padding: 0 1rem;
       background: #f4f5f7; color: #24272c; }
h1 { font-size: 1.6rem } h2 { font-size: 1.15rem; margin: 2.5rem 0 1rem }
ol { display: grid; grid-template-columns: repeat(auto-fill, minmax(22rem, 1fr)); gap: 1.5rem;
     list-style: none; padding: 0 }
li { background: #fff; border-radius: 10px; padding: .9rem; box-shadow: 0 1px 4px #0002 }
li.failed { outline: 2px solid #c93830 }
img { width: 100%; border-radius: 4px; display: block; margin-top: .6rem; border: 1px solid #0002 }
.captures img { width: auto; max-width: 100% }
p { margin: 0 } .why { color: #c93830 }
</style></head><body><h1>Tamrik: the tour</h1>
)";

QString image(const QString& file, const QString& alternative)
{
    return QStringLiteral("<a href=\"%1\"><img src=\"%1\" alt=\"%2\"></a>")
        .arg(QString::fromLatin1(QUrl::toPercentEncoding(file)), alternative.toHtmlEscaped());
}

} // namespace

Tour::Tour(const Desktop::VirtualDesktop& desktop, QString folder)
    : m_desktop(desktop)
    , m_folder(std::move(folder))
{
}

void Tour::leg(const QString& title)
{
    m_leg = title;
    std::printf("%s\n", qUtf8Printable(title));
}

void Tour::step(const QString& title, const Action& action)
{
    Entry entry{m_leg, title, {}, {}, {}};
    if (m_failures > 0) {
        entry.failure = QStringLiteral("not played");
    } else if (const Outcome<void> outcome = action(); !outcome) {
        entry.failure = outcome.error();
    }
    if (entry.failure != QLatin1String("not played")) {
        const auto picture = Desktop::Screen(m_desktop).grab();
        const QString name =
            QStringLiteral("step-%1.png").arg(m_entries.size() + 1, 2, 10, QLatin1Char('0'));
        if (picture && Desktop::savePng(*picture, m_folder + QLatin1Char('/') + name))
            entry.picture = name;
        else if (entry.failure.isEmpty())
            entry.failure = QStringLiteral("no picture of the screen could be kept");
    }
    if (!entry.failure.isEmpty())
        ++m_failures;
    std::printf("  %-5s %s%s\n", entry.failure.isEmpty() ? "ok" : "FAIL", qUtf8Printable(title),
                entry.failure.isEmpty() ? ""
                                        : qUtf8Printable(QStringLiteral(": ") + entry.failure));
    std::fflush(stdout);
    m_entries.append(entry);
}

void Tour::show(const QString& path)
{
    if (m_entries.isEmpty())
        return;
    const QString name = QFileInfo(path).fileName();
    const QString target = m_folder + QLatin1Char('/') + name;
    QFile::remove(target);
    if (QFile::copy(path, target))
        m_entries.back().files.append(name);
}

bool Tour::writeContactSheet() const
{
    QString html = QString::fromLatin1(sheetHead);
    QString leg;
    for (const Entry& entry : m_entries) {
        if (entry.leg != leg) {
            if (!leg.isEmpty())
                html += QStringLiteral("</ol>\n");
            leg = entry.leg;
            html += QStringLiteral("<h2>%1</h2>\n<ol>\n").arg(leg.toHtmlEscaped());
        }
        const bool ok = entry.failure.isEmpty();
        html += QStringLiteral("<li%1><p>%2</p>")
                    .arg(ok ? QString() : QStringLiteral(" class=\"failed\""),
                         entry.title.toHtmlEscaped());
        if (!ok)
            html += QStringLiteral("<p class=\"why\">%1</p>").arg(entry.failure.toHtmlEscaped());
        if (!entry.picture.isEmpty())
            html += image(entry.picture, entry.title);
        for (const QString& file : entry.files)
            html += QStringLiteral("<div class=\"captures\">%1</div>").arg(image(file, file));
        html += QStringLiteral("</li>\n");
    }
    html += QStringLiteral("</ol></body></html>\n");
    QFile file(m_folder + QStringLiteral("/index.html"));
    const QByteArray bytes = html.toUtf8();
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
