// EmptyPicture <file> <width> <height>: what any program pays that draws with Qt off screen and
// writes a PNG.
#include <QApplication>
#include <QImage>
#include <cstdlib>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    if (argc != 4) return 1;
    QImage image(std::atoi(argv[2]), std::atoi(argv[3]), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image.save(argv[1], "PNG") ? 0 : 1;
}
