#ifndef BENCH_EIGEN_RESULTS_H
#define BENCH_EIGEN_RESULTS_H

#include "Agreement.h"

#include <Eigen/Geometry>

/// The results of Eigen's rows, to be compared.
namespace agreement {

template <int Size>
struct NumbersOf<Eigen::Matrix<double, Size, 1>> {
  static void Append(std::vector<double>& out, const Eigen::Matrix<double, Size, 1>& v) {
    out.insert(out.end(), v.data(), v.data() + Size);
  }
};

template <>
struct NumbersOf<Eigen::Matrix4d> {
  static void Append(std::vector<double>& out, const Eigen::Matrix4d& m) {
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 4; ++c)
        out.push_back(m(r, c));
    }
  }
};

template <>
struct NumbersOf<Eigen::Isometry3d> {
  static void Append(std::vector<double>& out, const Eigen::Isometry3d& m) {
    NumbersOf<Eigen::Matrix4d>::Append(out, m.matrix());
  }
};

template <>
struct NumbersOf<Eigen::AlignedBox3d> {
  static void Append(std::vector<double>& out, const Eigen::AlignedBox3d& box) {
    NumbersOf<Eigen::Vector3d>::Append(out, box.min());
    NumbersOf<Eigen::Vector3d>::Append(out, box.max());
  }
};

} // namespace agreement

#endif
