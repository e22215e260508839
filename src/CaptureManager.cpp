#include "CaptureManager.h"

#include "Platform/CaptureTool.h"
#include "Platform/Screens.h"
#include "Support/CaptureFiles.h"
#include "Support/Log.h"
#include "Support/Process.h"
#include "Support/ToolRectangle.h"

CaptureManager::CaptureManager(Clock clock, QObject* parent)
    : QObject(parent)
    , m_clock(std::move(clock))
{
}

void CaptureManager::captureRect(Geometry::Rect rect, const Completion& completion)
{
    if (m_isCapturing) {
        completion({});
        return;
    }
    const auto screens = Platform::screens();
    if (screens.empty()) {
        completion({});
        return;
    }
    m_isCapturing = true;
    CaptureFiles::createFolder();
    const QUrl file = CaptureFiles::newScreenshot(m_clock);
    const Platform::CaptureTool tool = Platform::captureTool();
    const Process::Command command = {
        .program = tool.program,
        .arguments = {QStringLiteral("-x"), QStringLiteral("-t"), QStringLiteral("png"),
                      QStringLiteral("-R"), ToolRectangle::text(rect, screens.front().frame),
                      file.toLocalFile()},
        .environment = tool.environment,
    };

    auto* process = new Process(this);
    const PossibleFailure failure = process->start(command, [this, process, file, completion] {
        process->deleteLater();
        m_isCapturing = false;
        completion(CaptureFiles::exists(file) ? file : QUrl());
    });
    if (failure) {
        process->deleteLater();
        m_isCapturing = false;
        Log::line(QStringLiteral("failed to launch screencapture: ") +
                  QString::fromStdString(failure->message));
        completion({});
    }
}
