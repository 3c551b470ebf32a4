// The sky over the virtual place and the daylight that falls from it.  Linear light; white paper in the sun is about 1.
#pragma once

#include "scene/vector.hpp"

namespace biseam::scene {

Vec3 towards_sun();
Vec3 sunlight();

// What is seen where no solid is in the way.
Vec3 sky(Vec3 direction);

// Light from the whole sky and from the sunlit floor on a surface with this normal, nothing near it.
Vec3 skylight(Vec3 normal);

}  // namespace biseam::scene
