// Draws the bars of docs/performance.svg.

#include "Plot.h"

#include <algorithm>
#include <cmath>

#include "Markdown.h"

namespace quorvel::bench {

namespace {

constexpr double width = 900;
constexpr double leftEdge = 270;  // labels stand to the left of it
constexpr double rightEdge = 850;
constexpr double barHeight = 11;
constexpr double lineHeight = 16;
constexpr double groupHeight = 34;
constexpr double headHeight = 64;

constexpr const char* style =
    "text{font:12px sans-serif;fill:#222}.title{font-size:16px;font-weight:bold}"
    ".group{font-weight:bold}.end{text-anchor:end}.mid{text-anchor:middle}"
    ".grid{stroke:#ddd}.one{stroke:#222}.bar{fill:#2a7f9e}.slow{fill:#c0392b}"
    ".mark{stroke:#e08e0b;stroke-width:3}";

// Whole powers of two around everything that is drawn.
class Scale {
 public:
  explicit Scale(const std::vector<Bar>& bars) {
    for (const Bar& bar : bars) {
      const auto [low, high] = std::minmax(bar.value, bar.mark);
      m_first = std::min(m_first, static_cast<int>(std::floor(std::log2(low))));
      m_last = std::max(m_last, static_cast<int>(std::ceil(std::log2(high))));
    }
  }

  int first() const { return m_first; }
  int last() const { return m_last; }

  double at(double value) const {
    return leftEdge + (rightEdge - leftEdge) * (std::log2(value) - m_first) / (m_last - m_first);
  }

 private:
  int m_first = 0;
  int m_last = 1;
};

std::string text(const char* kind, double x, double y, const std::string& content) {
  return format("<text class=\"%s\" x=\"%.1f\" y=\"%.1f\">%s</text>\n", kind, x, y,
                content.c_str());
}

std::string verticalLine(const char* kind, double x, double top, double bottom) {
  return format("<line class=\"%s\" x1=\"%.1f\" x2=\"%.1f\" y1=\"%.1f\" y2=\"%.1f\"/>\n", kind, x,
                x, top, bottom);
}

std::string grid(const Scale& scale, double bottom) {
  std::string lines;
  for (int power = scale.first(); power <= scale.last(); ++power) {
    const double value = std::exp2(power);
    const double x = scale.at(value);
    lines += verticalLine(power == 0 ? "one" : "grid", x, headHeight, bottom);
    lines += text("mid", x, headHeight - 6, format("%gx", value));
  }
  return lines;
}

std::string line(const Bar& bar, const Scale& scale, double y) {
  const double one = scale.at(1);
  const double end = scale.at(bar.value);
  std::string drawn = text("end", leftEdge - 8, y + barHeight - 1, bar.label);
  drawn +=
      format("<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/>\n",
             bar.value < 1 ? "slow" : "bar", std::min(one, end), y, std::abs(end - one), barHeight);
  drawn += verticalLine("mark", scale.at(bar.mark), y - 1, y + barHeight + 1);
  return drawn + text("text", std::max({end, one, scale.at(bar.mark)}) + 6, y + barHeight - 1,
                      format("%.1f", bar.value));
}

}  // namespace

std::string plot(const std::string& title, const std::vector<Bar>& bars) {
  const Scale scale(bars);
  std::string drawn;
  double y = headHeight;
  for (std::size_t i = 0; i < bars.size(); ++i) {
    if (i == 0 || bars[i - 1].group != bars[i].group) {
      drawn += text("group", 8, y + groupHeight - 14, bars[i].group);
      y += groupHeight;
    }
    drawn += line(bars[i], scale, y);
    y += lineHeight;
  }
  const double height = y + lineHeight;
  return format("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\">\n", width,
                height) +
         "<style>" + style + "</style>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" +
         text("title", 8, 24, title) + grid(scale, y) + drawn + "</svg>\n";
}

}  // namespace quorvel::bench
