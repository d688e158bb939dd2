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

EigenNative::EigenNative(int n, const double* a, const double* b)
    : system(new System{Eigen::Map<const Eigen::MatrixXd>(a, n, n),
                        Eigen::Map<const Eigen::VectorXd>(b, n), Eigen::VectorXd(n)}) {}

EigenNative::~EigenNative() = default;

const double* EigenNative::FactorAndSolve() {
  const Eigen::PartialPivLU<Eigen::MatrixXd> lu(system->a);
  system->x = lu.solve(system->b);
  return system->x.data();
}
