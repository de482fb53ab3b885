// What pictures of a recording are made of: a page, panels with axes on it, matrices as coloured cells.  Needs cairo.
#ifndef PLOT_PLOT_H
#define PLOT_PLOT_H

#include <cairo.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace plot {

inline constexpr double kWidth = 1000;  // of a page
inline constexpr double kLeft = 80;     // of the panels
inline constexpr double kPlotWidth = 790;

struct Colour {
    double red, green, blue;
};
inline constexpr Colour kText{0.13, 0.13, 0.16};

// Colours of 0 .. 1; what lies outside is coloured as the nearer end.
using ColourMap = std::function<Colour(double)>;
// From dark to bright in even steps of lightness, so that a step looks alike everywhere, in print without colour too.
Colour darkToBright(double position);
// Blue below the middle, white there, red above.
Colour aroundZero(double position);

class Page {
  public:
    Page(bool svg, double height);  // as an SVG, or else a PNG

    cairo_t* cairo() { return context_.get(); }
    void colour(const Colour& c, double opacity = 1);
    // `anchor` is the part of the text's width that lies left of x: 0, 0.5 or 1.
    void text(double x, double y, const std::string& text, double size, double anchor = 0, bool bold = false);
    void verticalText(double x, double y, const std::string& words);
    void line(double x1, double y1, double x2, double y2, double width = 1);

    // The finished picture as the bytes of its file; throws std::runtime_error.
    std::string finish();

  private:
    template <auto free>
    struct Release {
        template <class T>
        void operator()(T* object) const {
            free(object);
        }
    };
    static cairo_status_t append(void* bytes, const unsigned char* data, unsigned length);

    bool svg_;
    std::string bytes_;
    std::unique_ptr<cairo_surface_t, Release<cairo_surface_destroy>> surface_;
    std::unique_ptr<cairo_t, Release<cairo_destroy>> context_;
};

// A panel on the page, with a range of values along each side.
struct Panel {
    double top, height;
    double timeSpan;
    double lowest, highest;
    double x(double time) const { return kLeft + kPlotWidth * time / timeSpan; }
    double y(double value) const { return top + height * (highest - value) / (highest - lowest); }
};

std::string number(double value);

// 1, 2 or 5 times a power of ten, so that about `count` of them fill the span.
double roundStep(double span, int count);

// Frame, title, labels and ticks of both axes; times are labelled under the lowest panel only.
void drawAxes(Page& page, const Panel& panel, const std::string& title, const std::string& yLabel,
              const std::vector<std::pair<double, std::string>>& yTicks, bool withTimes);

// A matrix as coloured cells; a row of it is a column of the picture, its first value at the bottom.
void drawCells(Page& page, const Panel& panel, double beginTime, double endTime, int rows, int cols,
               const std::function<Colour(int row, int col)>& colourOf);

void drawColourBar(Page& page, const Panel& panel, double lowest, double highest, const std::string& label,
                   const ColourMap& map);

// The ground of a panel, seen where there is no frame to show.
void drawGround(Page& page, const Panel& panel);

}  // namespace plot

#endif
