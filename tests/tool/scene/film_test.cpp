#include "scene/film.hpp"

#include <gtest/gtest.h>

#include <numbers>

namespace biseam::scene {
namespace {

bool operator==(Vec3 a, Vec3 b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

int count_differences(const Frame& a, const Frame& b) {
  int count = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) count += a.pixels[i] == b.pixels[i] ? 0 : 1;
  return count;
}

void expect_films_as_rendered(const View& view, double placards) {
  Place place(placards);
  place.go_to(0.25);
  const Film film(view, place);
  const Frame first = render(place, view);
  EXPECT_EQ(count_differences(film.picture(place), first), 0);
  for (const double seconds : {0.0, 0.5, 1.1, 1.9, 3.0, 4.3, 5.9}) {
    place.go_to(seconds);
    const Frame wanted = render(place, view);
    EXPECT_EQ(count_differences(film.picture(place), wanted), 0) << seconds;
    EXPECT_GT(count_differences(first, wanted), view.width * view.height / 1000) << seconds << ": nothing has moved";
  }
}

TEST(Film, ShowsThePanoramaThatIsRendered) {
  for (const double placards : {0.0, 1.2}) expect_films_as_rendered(view_of(PanoramaView{192, 96}), placards);
}

TEST(Film, ShowsTheFisheyesThatAreRendered) {
  for (const int index : {0, 1}) {
    expect_films_as_rendered(view_of(Fisheye::fitting(index, 120, 195 * std::numbers::pi / 180), 0.1), index);
  }
}

}  // namespace
}  // namespace biseam::scene
