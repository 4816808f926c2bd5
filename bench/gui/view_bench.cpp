// Times the views on large data: a 1 MB content stream in the content viewer, a 100 MB
// stream in the hex viewer and a 4000 x 4000 image in the image viewer, each opened and then
// scrolled or zoomed a frame at a time. Makes its own PDF file (in the folder given, default
// the system's temporary folder); runs on the offscreen platform; prints one line a step.
//
//   vantrel_view_bench [FOLDER]
#include <zlib.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QScrollBar>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFileStream.h"
#include "platform/ivImage2d.h"
#include "ui/views/ivWndDockView.h"
#include "ui/views/ivWndHEXViewer.h"
#include "ui/views/ivWndImageViewer.h"
#include "ui/views/ivWndViewer.h"

namespace {

constexpr std::size_t kHexBytes = 100u << 20;

double Milliseconds(const QElapsedTimer& clock) {
    return clock.nsecsElapsed() / 1e6;
}

// Runs `step`, paints the widget at once and prints the time taken.
template <class Step>
double Timed(const char* what, QWidget& widget, Step step, const char* goal) {
    QElapsedTimer clock;
    clock.start();
    step();
    QCoreApplication::processEvents();  // new views are shown by the event loop
    widget.repaint();
    const double ms = Milliseconds(clock);
    std::printf("%-52s %9.1f ms   (goal %s)\n", what, ms, goal);
    return ms;
}

// The mean time of painting `frames` frames, each after `move` has moved the view.
template <class Move>
double PerFrame(QWidget& widget, int frames, Move move) {
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < frames; ++i) {
        move(i);
        widget.repaint();
    }
    return Milliseconds(clock) / frames;
}

std::string ContentStream() {
    std::string s;
    for (int i = 0; s.size() < (1u << 20); ++i)
        s += "q 1 0 0 1 " + std::to_string(i % 500) + " " + std::to_string(i % 700) +
             " cm 0 0 m 100 100 l S Q\n";
    return s;
}

std::string Deflated(std::size_t size) {
    std::vector<unsigned char> plain(size);
    for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<unsigned char>((i * 7) ^ (i >> 9));
    uLongf packed = compressBound(static_cast<uLong>(size));
    std::string out(packed, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &packed, plain.data(), static_cast<uLong>(size), 1);
    out.resize(packed);
    return out;
}

// A page whose contents are `content`, and a Flate stream of kHexBytes bytes as object 5.
std::string MakeFile(const QString& folder) {
    const std::string content = ContentStream(), data = Deflated(kHexBytes);
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R /Big 5 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R >>",
        "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream",
        "<< /Length " + std::to_string(data.size()) + " /Filter /FlateDecode >>\nstream\n" + data +
            "\nendstream",
    };
    std::string pdf = "%PDF-1.4\n";
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        offsets.push_back(pdf.size());
        pdf += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::size_t xref = pdf.size();
    pdf += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (std::size_t offset : offsets) {
        char line[21];
        std::snprintf(line, sizeof line, "%010zu 00000 n \n", offset);
        pdf += line;
    }
    pdf += "trailer\n<< /Size " + std::to_string(objects.size() + 1) + " /Root 1 0 R >>\nstartxref\n" +
           std::to_string(xref) + "\n%%EOF\n";
    const QString path = QDir(folder).filePath("vantrel-view-bench.pdf");
    std::ofstream(path.toStdString(), std::ios::binary) << pdf;
    return path.toStdString();
}

void ContentViewer(const std::shared_ptr<ivPdf>& doc) {
    ivWndDockView view(true);
    view.resize(1000, 900);
    view.show();
    view.SetDocument(doc);
    Timed(
        "content viewer: show a 1 MB content stream", view,
        [&] {
            view.ShowObject(ResolveRef(*doc, {4, 0}));
        },
        "< 300 ms");
    auto* viewer = static_cast<ivWndViewer*>(view.ModeView());
    std::printf("%-52s %9zu\n", "  operations (lines)", viewer->Text().lines.size());
    QScrollBar* bar = viewer->verticalScrollBar();
    const double frame =
        PerFrame(*viewer->viewport(), 200, [&](int i) { bar->setValue(bar->maximum() / 200 * i); });
    std::printf("%-52s %9.2f ms   (goal < 16 ms)\n", "  scroll a page, per frame", frame);
}

void HexViewer(const std::shared_ptr<ivPdf>& doc) {
    ivWndDockView view(true);
    view.resize(1000, 900);
    view.show();
    view.SetDocument(doc);
    Timed(
        "hex viewer: show a 100 MB stream (decoded)", view,
        [&] {
            view.ShowObject(ResolveRef(*doc, {5, 0}));
        },
        "< 1000 ms");
    auto* hex = static_cast<ivWndHEXViewer*>(view.ModeView());
    std::printf("%-52s %9zu bytes\n", "  shown", hex->Bytes().size());
    QScrollBar* bar = hex->verticalScrollBar();
    const double frame =
        PerFrame(*hex->viewport(), 200, [&](int i) { bar->setValue(int(bar->maximum() / 200.0 * i)); });
    std::printf("%-52s %9.2f ms   (goal < 16 ms)\n", "  scroll anywhere, per frame", frame);
}

void ImageViewer() {
    auto image = std::make_shared<ivImage2d>();
    image->Create(ivImage2d::kBgr24, 4000, 4000);
    for (std::uint32_t y = 0; y < 4000; ++y)
        for (std::uint32_t x = 0; x < 12000; ++x) image->Row(y)[x] = static_cast<std::uint8_t>(x ^ y);
    ivWndImageViewer viewer;
    viewer.resize(1200, 900);
    viewer.show();
    QCoreApplication::processEvents();
    viewer.SetImage(image);
    std::printf("image viewer: 4000 x 4000 in 1200 x 900, fitted at %.3f\n", viewer.Zoom());
    for (float zoom : {0.0f, 0.25f, 1.0f, 3.0f}) {
        if (zoom > 0) viewer.SetZoom(zoom);
        viewer.viewport()->repaint();  // builds the scale tables
        double ms[2];
        for (int threaded = 0; threaded < 2; ++threaded) {
            viewer.SetThreaded(threaded == 1);
            ms[threaded] = PerFrame(*viewer.viewport(), 20, [&](int i) {
                viewer.horizontalScrollBar()->setValue(i * 7);
                viewer.verticalScrollBar()->setValue(i * 5);
            });
        }
        std::printf(
            "  zoom %-5.3f per frame: one thread %6.1f ms, bands on threads %6.1f ms   (goal < 50 ms)\n",
            viewer.Zoom(), ms[0], ms[1]);
    }
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const std::string path = MakeFile(argc > 1 ? QString(argv[1]) : QDir::tempPath());
    ivIOControl control;
    auto doc = std::make_shared<ivPdf>(ivFileStream::Open(path), path, &control);
    doc->Open();
    doc->Analyse();
    ContentViewer(doc);
    HexViewer(doc);
    ImageViewer();
    return 0;
}
