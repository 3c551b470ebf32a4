#include "scene/courtyard.hpp"

#include <string_view>

#include "scene/thrown_balls.hpp"

namespace biseam::scene {

namespace {

constexpr double up(double height) { return y_of_height(height); }

Shape box(double x0, double x1, double low, double high, double z0, double z1, Finish finish) {
  return {Solid::box, {x0, up(high), z0}, {x1, up(low), z1}, finish};
}

Shape roof(double x0, double x1, double low, double high, double z0, double z1) {
  return {Solid::roof, {x0, up(high), z0}, {x1, up(low), z1}, {Material::roof_tiles}};
}

Shape ball(double x, double height, double z, double radius, Finish finish) {
  return {Solid::ellipsoid, {x, up(height), z}, {radius, radius, radius}, finish};
}

Shape shaft(double x, double z, double low, double high, double foot_radius, double top_radius, Finish finish) {
  return {Solid::cylinder, {x, up(high), z}, {top_radius, up(low), foot_radius}, finish};
}

Shape block(double x, double z, double half, double low, double high, Finish finish) {
  return box(x - half, x + half, low, high, z - half, z + half, finish);
}

constexpr Finish kStone{Material::stone};

// What stands together is built together.
class Builder {
 public:
  explicit Builder(Courtyard& yard) : yard_(yard) {}

  void build_walls();
  void build_colonnade();
  void build_surroundings();
  void build_signs();
  void build_objects();

 private:
  // The first shape is what darkens the floor under and around it, when on_floor.
  void stand(const std::vector<Shape>& shapes, bool on_floor = true) {
    if (on_floor) yard_.footprints.push_back(bounds_of(shapes.front()));
    yard_.shapes.insert(yard_.shapes.end(), shapes.begin(), shapes.end());
  }

  // Lines of lettering on a board that has none yet.
  Finish lettered(const std::vector<std::string_view>& text, const Board& blank) {
    Board& made = *yard_.boards.emplace_back(std::make_unique<Board>(blank));
    for (const std::string_view line : text) made.lines.emplace_back(line);
    return {Material::board, {1, 1, 1}, &made};
  }

  Courtyard& yard_;
};

void Builder::build_walls() {
  const double in = kHalfYard, out = in + 0.35, high = 2.5;
  const Finish brick{Material::brick};
  const auto wall = [&](double x0, double x1, double z0, double z1) {
    stand({box(x0, x1, 0, high, z0, z1, brick), box(x0 - 0.07, x1 + 0.07, high, high + 0.12, z0 - 0.07, z1 + 0.07, kStone),
           box(x0 - 0.05, x1 + 0.05, 0, 0.28, z0 - 0.05, z1 + 0.05, kStone)},
          false);
  };
  wall(-out, out, -out, -in);
  wall(-out, out, in, out);
  wall(-out, -in, -in, in);
  wall(in, out, -in, in);
}

void Builder::build_colonnade() {
  const double z = -3.9;
  for (const double x : {-3.3, -1.3, 1.3, 3.3}) {
    stand({block(x, z, 0.27, 0, 0.16, kStone), shaft(x, z, 0.16, 2.5, 0.2, 0.165, {Material::fluted_stone}),
           shaft(x, z, 2.4, 2.52, 0.17, 0.25, kStone), block(x, z, 0.26, 2.52, 2.62, kStone)});
  }
  std::vector<Shape> beam{box(-3.75, 3.75, 2.62, 3.06, z - 0.2, z + 0.2, kStone),
                          box(-3.85, 3.85, 3.06, 3.16, z - 0.3, z + 0.24, kStone)};
  for (int n = 0; n < 13; ++n) {
    const double x = -3.6 + 0.6 * n;
    beam.push_back(box(x - 0.05, x + 0.05, 3.16, 3.3, -5.5, z + 0.2, {Material::wood, {0.8, 0.75, 0.7}}));
  }
  stand(beam, false);
  stand({box(-0.95, 0.95, 0, 2.3, -5.2, -5.13, kStone),
         box(-0.78, 0.78, 0.28, 2.14, -5.2, -5.11, {Material::door, {0.35, 0.62, 0.72}}),
         box(-0.95, 0.95, 0, 0.28, -5.2, -4.85, kStone), ball(0.1, 1.1, -5.1, 0.035, {Material::steel})});
}

void Builder::build_surroundings() {
  const auto house = [&](double x0, double x1, double z0, double z1, double high, Vec3 tint) {
    stand({box(x0, x1, 0, high, z0, z1, {Material::plaster, tint}),
           roof(x0 - 0.4, x1 + 0.4, high, high + 1.5, z0 - 0.5, z1 + 0.5)},
          false);
  };
  house(1.9, 9.5, -16, -11, 7.0, {0.72, 0.48, 0.25});
  house(-10.3, -2.7, -15, -10.5, 5.2, {0.70, 0.36, 0.25});
  house(-19, -12, -6, 6, 5.0, {0.66, 0.58, 0.44});
  house(-9, -1.4, 10, 15, 4.7, {0.72, 0.60, 0.36});
  const auto cypress = [&](double x, double z, double high, double radius) {
    stand({{Solid::ellipsoid, {x, up(high * 0.52), z}, {radius, high * 0.5, radius}, {Material::leaves, {0.75, 0.85, 0.8}}}},
          false);
  };
  cypress(-0.9, -9.5, 6.4, 0.75);
  cypress(0.5, -9.9, 7.6, 0.8);
  cypress(9.0, -2.4, 5.6, 0.75);
  cypress(9.3, 1.7, 6.6, 0.8);
  cypress(2.6, 9.6, 5.2, 0.7);
  cypress(-8.2, -7.6, 6.0, 0.75);
}

void Builder::build_signs() {
  const Vec3 white{0.80, 0.79, 0.75}, blue{0.03, 0.10, 0.28}, green{0.03, 0.17, 0.12}, red{0.42, 0.05, 0.04},
      dark{0.08, 0.07, 0.06};
  const Vec3 pale{0.70, 0.65, 0.56};
  const double wall = kHalfYard - 0.04;
  const Finish name = lettered({"BISEAM"}, {{}, 2.3, 0.42, 0.25, pale, dark});
  stand({box(-1.15, 1.15, 2.63, 3.05, -3.7, -3.64, name)}, false);
  const Finish back = lettered({"LENS 1 LOOKS", "THIS WAY"}, {{}, 1.6, 0.7, 0.14, blue, white});
  stand({box(2.1, 3.7, 1.3, 2.0, -wall - 0.04, -wall, back)}, false);
  const Finish front = lettered({"LENS 0 LOOKS", "THIS WAY"}, {{}, 2.3, 0.95, 0.2, blue, white});
  stand({box(0.5, 2.8, 1.25, 2.2, wall, wall + 0.04, front)}, false);
  const Finish first = lettered({"A SEAM", "RUNS HERE"}, {{}, 2.6, 1.1, 0.26, green, white});
  stand({box(wall, wall + 0.04, 1.2, 2.3, -1.3, 1.3, first)}, false);
  const Finish second = lettered({"AND ANOTHER", "ONE HERE"}, {{}, 2.9, 1.1, 0.24, red, white});
  stand({box(-wall - 0.04, -wall, 1.25, 2.35, -1.45, 1.45, second)}, false);
  const Finish chart{Material::chart};
  stand({box(-3.3, -2.1, 1.05, 2.25, -wall - 0.04, -wall, chart)}, false);
  stand({box(-wall - 0.04, -wall, 1.05, 2.25, -3.6, -2.4, chart)}, false);
  stand({box(wall, wall + 0.04, 1.05, 2.25, 1.9, 3.1, chart)}, false);
}

void Builder::build_objects() {
  const auto plant = [&](double x, double z, double size, Vec3 pot) {
    stand({block(x, z, 0.52 * size, 0, 0.7 * size, {Material::stone, pot}),
           block(x, z, 0.47 * size, 0.69 * size, 0.71 * size, {Material::earth}),
           shaft(x, z, 0.7 * size, 1.0 * size, 0.05, 0.04, {Material::wood}),
           ball(x, 1.32 * size, z, 0.52 * size, {Material::leaves})});
  };
  plant(2.9, -0.5, 0.72, {0.85, 0.55, 0.42});
  plant(-3.9, -3.6, 0.8, {0.85, 0.55, 0.42});
  plant(4.4, -4.3, 0.9, {0.9, 0.9, 0.9});
  plant(-2.6, 4.2, 0.85, {0.85, 0.55, 0.42});
  const auto pedestal = [&](double x, double z) {
    const double top = kPedestalHeight;
    stand({block(x, z, 0.26, 0, 0.08, kStone), block(x, z, 0.2, 0.08, top - 0.08, kStone),
           block(x, z, 0.25, top - 0.08, top, kStone)});
  };
  pedestal(-1.5, -1.95);
  stand({ball(-1.5, kPedestalHeight + 0.34, -1.95, 0.34, {Material::steel})}, false);
  for (const Shape& thrown : thrown_balls(0)) pedestal(thrown.a.x, thrown.a.z);
  const auto lamp = [&](double x, double z) {
    stand({block(x, z, 0.1, 0, 0.12, {Material::iron}), shaft(x, z, 0.12, 2.75, 0.035, 0.025, {Material::iron}),
           block(x, z, 0.09, 2.75, 2.79, {Material::iron}), ball(x, 2.92, z, 0.14, {Material::lacquer, {0.8, 0.76, 0.66}})});
  };
  lamp(3.3, 0.75);
  lamp(-3.6, -0.75);
  stand({box(-1.0, 0.75, 0.40, 0.46, 3.5, 3.95, {Material::wood, {1, 0.9, 0.8}}),
         box(-0.85, -0.77, 0, 0.4, 3.55, 3.9, {Material::iron}), box(0.52, 0.6, 0, 0.4, 3.55, 3.9, {Material::iron}),
         box(-1.0, 0.75, 0.62, 0.86, 3.95, 3.99, {Material::wood, {1, 0.9, 0.8}}),
         box(-0.85, -0.79, 0.46, 0.86, 3.97, 4.01, {Material::iron}),
         box(0.54, 0.6, 0.46, 0.86, 3.97, 4.01, {Material::iron})});
  stand({box(2.5, 3.3, 0, 0.6, 3.0, 3.75, {Material::wood}),
         box(2.6, 3.15, 0.6, 1.1, 3.1, 3.65, {Material::wood, {0.85, 0.8, 0.75}}),
         box(3.4, 3.95, 0, 0.5, 3.3, 3.8, {Material::wood, {0.9, 0.95, 0.9}})});
}

}  // namespace

Courtyard build_courtyard() {
  Courtyard yard;
  Builder builder(yard);
  builder.build_walls();
  builder.build_colonnade();
  builder.build_surroundings();
  builder.build_signs();
  builder.build_objects();
  return yard;
}

}  // namespace biseam::scene
