// guide_pdf: turns the user guide's markdown into the PDF the Help menu opens.
//
//   guide_pdf INPUT.md OUTPUT.pdf [--subtitle TEXT]... [--png-dir DIR]
//
// A title page (the markdown's first level-1 heading and the subtitles), a
// contents page (the level-2 and level-3 headings with their page numbers),
// then the guide on A4 pages with a footer. --png-dir also writes every page
// as a PNG, to look at the layout without a PDF viewer. Runs headless with
// QT_QPA_PLATFORM=offscreen.
#include <unistd.h>
#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int kDpi = 300;
constexpr int kPreviewDpi = 100;
// Millimetres: left, top, right, bottom.
const QMarginsF kMargins(22, 20, 22, 16);
constexpr double kFooterMm = 9;
constexpr double kBodyPoints = 10.5;
// A heading this close to the foot of its page (in body lines) moves to the next.
constexpr double kHeadingRoomLines = 3;
constexpr double kContentsSpacing = 1.5;  // lines
const QColor kAccent(0x1d, 0x73, 0x69);   // a darker shade of the dial's panel colour
const QColor kFooterGrey(0x70, 0x70, 0x70);
const QColor kRule(0xb8, 0xc4, 0xc2);
const QColor kHeaderShade(0xe3, 0xf1, 0xef);
const QColor kCodeShade(0xf2, 0xf2, 0xf2);

struct Options {
    QString input, output, pngDir;
    QStringList subtitles;
};

struct Heading {
    int level;
    QString text;
    int bodyPage;  // 0-based page of the body
};

[[noreturn]] void finish(int code) {
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(code);  // fonts and the platform need no orderly teardown here
}

[[noreturn]] void fail(const QString& message) {
    std::fprintf(stderr, "guide_pdf: %s\n", qPrintable(message));
    finish(1);
}

Options parse(const QStringList& args) {
    Options o;
    QStringList positional;
    for (int i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == "--subtitle" && i + 1 < args.size()) {
            o.subtitles.append(args[++i]);
        } else if (a == "--png-dir" && i + 1 < args.size()) {
            o.pngDir = args[++i];
        } else if (a.startsWith("--")) {
            fail("unknown option " + a);
        } else {
            positional.append(a);
        }
    }
    if (positional.size() != 2)
        fail("usage: guide_pdf INPUT.md OUTPUT.pdf [--subtitle TEXT]... [--png-dir DIR]");
    o.input = positional[0];
    o.output = positional[1];
    return o;
}

QFont textFont(double points) {
    QFont f;
    f.setFamilies({"DejaVu Sans", "Liberation Sans", "Noto Sans", "Sans Serif"});
    f.setPointSizeF(points);
    return f;
}

// Takes the first level-1 heading ("# Title") out of the markdown: it is the
// title page's.
QString takeTitle(QString& markdown) {
    QStringList lines = markdown.split('\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines[i].startsWith("# ")) continue;
        const QString title = lines[i].mid(2).trimmed();
        lines.removeAt(i);
        markdown = lines.join('\n');
        return title;
    }
    return "User Guide";
}

// A code block, indented or fenced: the markdown importer marks both with a
// (possibly empty) language.
bool isCode(const QTextBlock& b) {
    return b.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

// Readable spacing, coloured headings, shaded code and ruled tables on top of
// what the markdown gives.
void style(QTextDocument& doc, double px) {
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        QTextCursor c(b);
        QTextBlockFormat bf = b.blockFormat();
        const int level = bf.headingLevel();
        if (level > 0) {
            bf.setTopMargin(px * (level == 2 ? 1.2 : 0.7));
            bf.setBottomMargin(px * 0.3);
            c.setBlockFormat(bf);
            c.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            QTextCharFormat cf;
            cf.setForeground(kAccent);
            c.mergeCharFormat(cf);
            continue;
        }
        if (isCode(b)) {
            bf.setBackground(kCodeShade);
            bf.setLeftMargin(px * 0.8);
        } else if (c.currentTable()) {
            bf.setTopMargin(0);
            bf.setBottomMargin(0);
            bf.setLineHeight(110, QTextBlockFormat::ProportionalHeight);
        } else {
            bf.setLineHeight(125, QTextBlockFormat::ProportionalHeight);
        }
        c.setBlockFormat(bf);
    }
    for (QTextFrame* frame : doc.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (!table) continue;
        QTextTableFormat tf = table->format();
        tf.setBorderCollapse(true);
        tf.setBorder(px * 0.06);
        tf.setBorderBrush(kRule);
        tf.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        tf.setCellSpacing(0);
        tf.setCellPadding(px * 0.15);
        tf.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        tf.setTopMargin(px * 0.3);
        tf.setBottomMargin(px * 0.5);
        table->setFormat(tf);
        for (int col = 0; col < table->columns(); ++col) {
            QTextTableCell cell = table->cellAt(0, col);
            QTextCharFormat cf = cell.format();
            cf.setBackground(kHeaderShade);
            cell.setFormat(cf);
        }
    }
}

// Where a block lies in the document; a block in a table cell counts as the
// table's position.
QRectF placeOf(QTextDocument& doc, const QTextBlock& b) {
    QTextFrame* frame = QTextCursor(b).currentFrame();
    if (frame && frame != doc.rootFrame()) return doc.documentLayout()->frameBoundingRect(frame);
    return doc.documentLayout()->blockBoundingRect(b);
}

// The lines of a block, from the top of the first to the bottom of the last,
// in the document's coordinates; empty for a block without lines.
QRectF linesOf(QTextDocument& doc, const QTextBlock& b) {
    const QTextLayout* layout = b.layout();
    if (!layout || layout->lineCount() == 0) return {};
    const double top = doc.documentLayout()->blockBoundingRect(b).top();
    const QTextLine first = layout->lineAt(0);
    const QTextLine last = layout->lineAt(layout->lineCount() - 1);
    return QRectF(0, top + first.y(), 1, last.y() + last.height() - first.y());
}

int pageOf(double y, double pageHeight) {
    return static_cast<int>(std::floor(y / pageHeight));
}

void breakBefore(QTextBlock b) {
    QTextBlockFormat bf = b.blockFormat();
    bf.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(b).setBlockFormat(bf);  // lays the rest out again
}

// One pass from the top, each decision moving only what follows:
// - a heading goes to the next page when the text it heads would start there,
//   or when it would stand in the last few lines of its page;
// - a paragraph or list item that would run over a page break starts on the
//   next page instead, with the headings right above it. The painter draws
//   a page by clipping the whole document, and Qt writes the line above a
//   clip's top edge into the page too: invisible there, but found by search
//   and copy, so a block split by a page break would show up on both pages.
void paginate(QTextDocument& doc, double pageHeight, double lineHeight) {
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        QTextBlockFormat bf = b.blockFormat();
        if (bf.pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore) continue;
        if (bf.headingLevel() > 0) {
            QTextBlock text = b.next();
            while (text.isValid() && text.blockFormat().headingLevel() > 0) text = text.next();
            const QRectF r = placeOf(doc, b);
            const int page = pageOf(r.top(), pageHeight);
            const double pageEnd = (page + 1) * pageHeight;
            const bool textOnLaterPage =
                text.isValid() && pageOf(placeOf(doc, text).top(), pageHeight) > page;
            if (textOnLaterPage || pageEnd - r.bottom() < kHeadingRoomLines * lineHeight)
                breakBefore(b);
            continue;
        }
        const QRectF lines = linesOf(doc, b);
        // A block taller than a page has to be split; it is the guide's author's to avoid.
        if (lines.isEmpty() || lines.height() > pageHeight) continue;
        if (pageOf(lines.top(), pageHeight) == pageOf(lines.bottom() - 1, pageHeight)) continue;
        if (QTextTable* table = QTextCursor(b).currentTable()) {
            // A row runs on over the break: the table starts on the next page,
            // when it fits on one.
            QTextTableFormat tf = table->format();
            if (!(tf.pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore) &&
                doc.documentLayout()->frameBoundingRect(table).height() <= pageHeight) {
                tf.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
                table->setFormat(tf);
            }
            continue;
        }
        QTextBlock first = b;
        while (first.previous().isValid() && first.previous().blockFormat().headingLevel() > 0 &&
               !(first.blockFormat().pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore))
            first = first.previous();
        breakBefore(first);
    }
}

std::vector<Heading> headings(QTextDocument& doc, double pageHeight) {
    std::vector<Heading> list;
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        const int level = b.blockFormat().headingLevel();
        if (level != 2 && level != 3) continue;
        const QRectF r = doc.documentLayout()->blockBoundingRect(b);
        list.push_back({level, b.text(), static_cast<int>(r.top() / pageHeight)});
    }
    return list;
}

class Guide {
public:
    Guide(const Options& o, QPdfWriter& writer) : m_o(o) {
        const QRect page = writer.pageLayout().paintRectPixels(kDpi);
        m_width = page.width();
        m_footer = kFooterMm / 25.4 * kDpi;
        // Whole device pixels: the layout keeps page heights in 1/64 pixel
        // steps, and a page break the painting puts elsewhere by a fraction
        // shows the first line of a page on the one before it as well.
        m_bodyHeight = std::floor(page.height() - m_footer);

        QFile in(o.input);
        if (!in.open(QIODevice::ReadOnly)) fail("cannot read " + o.input);
        m_doc.documentLayout()->setPaintDevice(&writer);
        m_doc.setDefaultFont(textFont(kBodyPoints));
        m_doc.setDocumentMargin(0);
        QString markdown = QString::fromUtf8(in.readAll());
        m_title = takeTitle(markdown);
        m_doc.setMarkdown(markdown);
        m_line = QFontMetricsF(textFont(kBodyPoints), &writer).lineSpacing();
        style(m_doc, m_line);
        m_doc.setPageSize(QSizeF(m_width, m_bodyHeight));
        paginate(m_doc, m_bodyHeight, m_line);
        m_headings = headings(m_doc, m_bodyHeight);
        m_contentsLines =
            static_cast<int>((m_bodyHeight - 3.5 * m_line) / (kContentsSpacing * m_line));
        m_contentsPages = std::max(
            1, (static_cast<int>(m_headings.size()) + m_contentsLines - 1) / m_contentsLines);
    }

    int pageCount() const { return 1 + m_contentsPages + m_doc.pageCount(); }
    const QString& title() const { return m_title; }

    void paint(QPainter& p, int page) const {
        if (page == 0) return titlePage(p);
        if (page <= m_contentsPages)
            contentsPage(p, page - 1);
        else
            bodyPage(p, page - 1 - m_contentsPages);
        footer(p, page);
    }

private:
    void titlePage(QPainter& p) const {
        const double band = 70 / 25.4 * kDpi;
        p.fillRect(QRectF(0, 0, m_width, band), kAccent);
        p.setPen(Qt::white);
        QFont big = textFont(30);
        big.setBold(true);
        p.setFont(big);
        const double inset = 10 / 25.4 * kDpi;
        p.drawText(QRectF(inset, 0, m_width - 2 * inset, band * 0.62),
                   Qt::AlignLeft | Qt::AlignBottom, m_title);
        p.setFont(textFont(14));
        p.drawText(QRectF(inset, band * 0.66, m_width - 2 * inset, band * 0.3),
                   Qt::AlignLeft | Qt::AlignTop, m_o.subtitles.value(0));
        p.setPen(Qt::black);
        p.setFont(textFont(12));
        double y = band + 2 * m_line;
        for (int i = 1; i < m_o.subtitles.size(); ++i, y += 1.6 * m_line)
            p.drawText(QPointF(inset, y), m_o.subtitles[i]);
    }

    void contentsPage(QPainter& p, int index) const {
        QFont heading = textFont(16);
        heading.setBold(true);
        p.setFont(heading);
        p.setPen(kAccent);
        if (index == 0) p.drawText(QPointF(0, 1.5 * m_line), "Contents");
        double y = 3.5 * m_line;
        const int first = index * m_contentsLines;
        for (int i = first; i < std::min<int>(first + m_contentsLines, m_headings.size()); ++i) {
            const Heading& h = m_headings[static_cast<std::size_t>(i)];
            QFont f = textFont(h.level == 2 ? kBodyPoints + 0.5 : kBodyPoints);
            f.setBold(h.level == 2);
            p.setFont(f);
            p.setPen(Qt::black);
            const double indent = h.level == 2 ? 0 : 2.2 * m_line;
            const QString number = QString::number(1 + m_contentsPages + h.bodyPage + 1);
            const QFontMetricsF fm(f, p.device());
            const double numberX = m_width - fm.horizontalAdvance(number);
            p.drawText(QPointF(indent, y), h.text);
            p.drawText(QPointF(numberX, y), number);
            // Dot leaders between the two.
            const double from = indent + fm.horizontalAdvance(h.text) + m_line * 0.5;
            const double dot = fm.horizontalAdvance(". ");
            p.setPen(kFooterGrey);
            for (double x = from; x + dot < numberX - m_line * 0.3; x += dot)
                p.drawText(QPointF(x, y), ".");
            y += kContentsSpacing * m_line;
        }
    }

    void bodyPage(QPainter& p, int index) const {
        p.save();
        const QRectF page(0, index * m_bodyHeight, m_width, m_bodyHeight);
        p.translate(0, -page.top());
        p.setClipRect(page, Qt::IntersectClip);
        // The layout draws every line that touches its clip, and the painter's
        // clip only hides what falls outside: a line beginning on the next page,
        // or ending where this one begins, would still be written into this
        // page, invisible but found by search and copy. A pixel in from each
        // edge, only the page's own lines touch it.
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = page.adjusted(0, 1, 0, -1);
        m_doc.documentLayout()->draw(&p, context);
        p.restore();
    }

    void footer(QPainter& p, int page) const {
        const double y = m_bodyHeight + m_footer * 0.75;
        p.setPen(QPen(kFooterGrey, kDpi / 150.0));
        p.drawLine(QPointF(0, m_bodyHeight + m_footer * 0.2),
                   QPointF(m_width, m_bodyHeight + m_footer * 0.2));
        p.setFont(textFont(8.5));
        p.drawText(QPointF(0, y), m_title);
        const QString number = QString("Page %1 of %2").arg(page + 1).arg(pageCount());
        const QFontMetricsF fm(p.font(), p.device());
        p.drawText(QPointF(m_width - fm.horizontalAdvance(number), y), number);
    }

    const Options& m_o;
    mutable QTextDocument m_doc;  // drawing it lays it out lazily
    QString m_title;
    double m_width = 0, m_bodyHeight = 0, m_footer = 0, m_line = 0;
    std::vector<Heading> m_headings;
    int m_contentsLines = 1, m_contentsPages = 1;
};

}  // namespace

int main(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    const Options o = parse(app.arguments());

    QPdfWriter writer(o.output);
    writer.setResolution(kDpi);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(kMargins, QPageLayout::Millimeter);
    writer.setCreator("lv_Analog guide_pdf");
    Guide guide(o, writer);
    writer.setTitle(guide.title());

    QPainter painter;
    if (!painter.begin(&writer)) fail("cannot write " + o.output);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int page = 0; page < guide.pageCount(); ++page) {
        if (page > 0) writer.newPage();
        guide.paint(painter, page);
    }
    if (!painter.end()) fail("cannot finish " + o.output);

    if (!o.pngDir.isEmpty()) {
        QDir().mkpath(o.pngDir);
        const QRect paper = writer.pageLayout().fullRectPixels(kDpi);
        const QRect paint = writer.pageLayout().paintRectPixels(kDpi);
        const double scale = double(kPreviewDpi) / kDpi;
        for (int page = 0; page < guide.pageCount(); ++page) {
            QImage image((paper.size() * scale), QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter p(&image);
            p.setRenderHint(QPainter::Antialiasing);
            p.scale(scale, scale);
            p.translate(paint.topLeft());
            guide.paint(p, page);
            p.end();
            image.save(QString("%1/page-%2.png").arg(o.pngDir).arg(page + 1, 2, 10, QChar('0')));
        }
    }
    std::printf("%s: %d pages\n", qPrintable(o.output), guide.pageCount());
    finish(0);
}
