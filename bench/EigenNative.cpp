// This Eigen has its own namespace. The linker must not mix the inline functions of two sets of
// flags.
#define Eigen EigenForThisProcessor
#include <Eigen/LU>

#include "EigenNative.h"

struct EigenNative::System {
  Eigen::MatrixXd a;
  Eigen::VectorXd b;
  Eigen::VectorXd x;
};

EigenNative::EigenNative(int n)
    : system(new System{Eigen::MatrixXd(n, n), Eigen::VectorXd(n), Eigen::VectorXd(n)}) {}

EigenNative::~EigenNative() = default;

double* EigenNative::Matrix() {
  return system->a.data();
}

double* EigenNative::RightSide() {
  return system->b.data();
}

const double* EigenNative::FactorAndSolve() {
  const Eigen::PartialPivLU<Eigen::MatrixXd> lu(system->a);
  system->x = lu.solve(system->b);
  return system->x.data();
}
