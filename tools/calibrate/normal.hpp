// Normal equations of the values and of three coordinates of each pair's ground.
#pragma once

#include <opencv2/core.hpp>

#include "calibrate/ring.hpp"

namespace biseam::calibrate {

struct Normal {
  cv::Mat1d matrix, right;

  explicit Normal(int size) : matrix(cv::Mat1d::zeros(size, size)), right(cv::Mat1d::zeros(size, 1)) {}

  // A quantity whose derivatives by the values a row has, with its pull.
  void add(const Row& row, double stiffness, double slope) {
    for (int i = 0; i < kParameters; ++i) {
      const double a = row[std::size_t(i)];
      if (a == 0) continue;
      right(i, 0) -= a * slope;
      double* out = matrix[i];
      for (int j = 0; j < kParameters; ++j) out[j] += stiffness * a * row[std::size_t(j)];
    }
  }

  // A row that reaches a ground as well.
  void add(const Row& row, const Vec3& ground, int place, double stiffness, double slope) {
    add(row, stiffness, slope);
    const double g[3] = {ground.x, ground.y, ground.z};
    for (int i = 0; i < 3; ++i) {
      right(place + i, 0) -= g[i] * slope;
      for (int j = 0; j < kParameters; ++j) {
        const double value = stiffness * g[i] * row[std::size_t(j)];
        matrix(place + i, j) += value;
        matrix(j, place + i) += value;
      }
      for (int j = 0; j < 3; ++j) matrix(place + i, place + j) += stiffness * g[i] * g[j];
    }
  }
};

}  // namespace biseam::calibrate
