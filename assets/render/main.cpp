// kalvex2-render-assets: turns the program's SVG drawings into the icon and
// picture files Kalvex2 loads at run time.
//
//   kalvex2-render-assets ico IN.svg OUT.ico
//   kalvex2-render-assets jpg IN.svg OUT.jpg WIDTH HEIGHT

#include "svgrender.h"

#include <QGuiApplication>
#include <QStringList>

#include <cstdio>

namespace {

int usage()
{
    std::fputs("usage: kalvex2-render-assets ico IN.svg OUT.ico\n"
               "       kalvex2-render-assets jpg IN.svg OUT.jpg WIDTH HEIGHT\n",
               stderr);
    return 2;
}

int failure(const QString &message)
{
    std::fprintf(stderr, "kalvex2-render-assets: %s\n", qPrintable(message));
    return 1;
}

// The offscreen platform complains about a missing XDG_RUNTIME_DIR on build
// machines; that is irrelevant to rendering files, so keep the build quiet.
QtMessageHandler g_defaultHandler = nullptr;

void quietHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
        return;
    if (g_defaultHandler)
        g_defaultHandler(type, context, message);
}

int parseDimension(const QString &text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok && value > 0 && value <= 8192 ? value : 0;
}

} // namespace

int main(int argc, char **argv)
{
    // Build machines have no display: draw off screen unless told otherwise.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    g_defaultHandler = qInstallMessageHandler(quietHandler);
    QGuiApplication app(argc, argv);

    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty())
        return usage();

    const QString &command = args.at(0);
    QString error;
    if (command == QLatin1String("ico") && args.size() == 3) {
        if (!kalvex2::assets::writeIconFile(args.at(1), args.at(2), &error))
            return failure(error);
        return 0;
    }
    if (command == QLatin1String("jpg") && args.size() == 5) {
        const int width = parseDimension(args.at(3));
        const int height = parseDimension(args.at(4));
        if (width == 0 || height == 0)
            return failure(QStringLiteral("invalid size %1x%2").arg(args.at(3), args.at(4)));
        if (!kalvex2::assets::writeJpegFile(args.at(1), args.at(2), QSize(width, height), &error))
            return failure(error);
        return 0;
    }
    return usage();
}
