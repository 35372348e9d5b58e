#include "metafiles.h"

#include "pictureformats.h"

#include <QMutex>
#include <QPainter>
#include <QSvgRenderer>

#include <Magick++.h>
#include <emf2svg.h>

#include <dlfcn.h>

namespace Metafiles {
namespace {

// Larger metafiles than this are refused rather than drawn into a huge page.
constexpr int kLargestSide = 8000;

bool drawable(const QSize &size)
{
    return size.isValid() && size.width() <= kLargestSide && size.height() <= kLargestSide;
}

QMutex &magickLock()
{
    static QMutex lock;
    return lock;
}

void initialiseMagick()
{
    static const bool done = [] {
        Magick::InitializeMagick(nullptr);
        Magick::ResourceLimits::width(kLargestSide);
        Magick::ResourceLimits::height(kLargestSide);
        return true;
    }();
    Q_UNUSED(done)
}

// libemf2svg's own libuemf exports a wmf_free() of its own, which would take the place of
// libwmf's in ImageMagick's WMF reader and crash it. So the converter is loaded apart, binding
// its libraries to each other first (RTLD_DEEPBIND), and never enters the global symbol scope.
using Emf2SvgFunction = int (*)(char *, size_t, char **, size_t *, generatorOptions *);

Emf2SvgFunction emf2svgFunction()
{
    static const Emf2SvgFunction function = []() -> Emf2SvgFunction {
        for (const char *name : {"libemf2svg.so.1", "libemf2svg.so"}) {
#ifdef __SANITIZE_ADDRESS__
            // AddressSanitizer refuses RTLD_DEEPBIND (its interceptors must bind first); the
            // sanitizer build of the tests draws EMF without it.
            constexpr int flags = RTLD_NOW | RTLD_LOCAL;
#else
            constexpr int flags = RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND;
#endif
            if (void *library = dlopen(name, flags))
                return reinterpret_cast<Emf2SvgFunction>(dlsym(library, "emf2svg"));
        }
        return nullptr;
    }();
    return function;
}

} // namespace

QImage drawWmf(const QByteArray &wmf)
{
    const QSize natural = PictureFormats::wmfNaturalSize(wmf);
    if (PictureFormats::kindOf(wmf) != PictureFormats::Kind::Wmf || (natural.isValid() && !drawable(natural)))
        return {};
    QMutexLocker locker(&magickLock());
    initialiseMagick();
    try {
        Magick::Image picture;
        picture.density(Magick::Geometry(96, 96));
        picture.backgroundColor(Magick::Color("white"));
        picture.magick("WMF");
        picture.read(Magick::Blob(wmf.constData(), size_t(wmf.size())));
        const QSize drawn(int(picture.columns()), int(picture.rows()));
        if (!drawable(drawn))
            return {};
        QImage image(drawn, QImage::Format_RGBA8888);
        picture.write(0, 0, size_t(drawn.width()), size_t(drawn.height()), "RGBA",
                      Magick::CharPixel, image.bits());
        image = image.convertToFormat(QImage::Format_ARGB32);
        // ImageMagick rounds the page outward; the placeable header says what the picture measures.
        if (natural.isValid() && natural != drawn)
            image = image.scaled(natural, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return image;
    } catch (const std::exception &) {
        return {};
    }
}

QImage drawEmf(const QByteArray &emf)
{
    const QSize natural = PictureFormats::emfNaturalSize(emf);
    if (!drawable(natural))
        return {};
    generatorOptions options{};
    options.nameSpace = const_cast<char *>("");
    options.svgDelimiter = true;
    options.emfplus = true;
    options.imgWidth = natural.width();
    options.imgHeight = natural.height();
    char *svg = nullptr;
    size_t svgLength = 0;
    QByteArray copy = emf; // the converter takes a writable buffer
    const Emf2SvgFunction convert = emf2svgFunction();
    if (!convert)
        return {};
    const int ok = convert(copy.data(), size_t(copy.size()), &svg, &svgLength, &options);
    const QByteArray document = (ok && svg) ? QByteArray(svg, qsizetype(svgLength)) : QByteArray();
    free(svg);
    if (document.isEmpty())
        return {};
    QSvgRenderer renderer(document);
    if (!renderer.isValid())
        return {};
    QImage image(natural, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(natural)));
    return image;
}

} // namespace Metafiles
