// Solves linear equations: one matrix, several right-hand sides.

#include <gsl_LinearEqnLUDSolver.h>

#include <cstdio>

int main() {
  // Three joints in a row, with springs between them and to a wall at each end. The solver works in
  // place, so the matrix belongs to the caller and holds the factors afterwards.
  double stiffness[3][3] = {{2.0, -1.0, 0.0}, {-1.0, 2.0, -1.0}, {0.0, -1.0, 2.0}};
  double* rows[3] = {stiffness[0], stiffness[1], stiffness[2]};

  gsl_LinearEqnLUDSolver solver;
  solver.SetMatrix(rows, 3);

  double forces[2][3] = {{4.0, 0.0, 0.0}, {0.0, 8.0, 0.0}};
  for (double(&force)[3] : forces) {
    double shift[3];
    if (!solver.Solve(force, shift)) return 1; // the first call decomposes, the second does not
    std::printf("force (%g, %g, %g) -> shift (%g, %g, %g)\n", force[0], force[1], force[2],
                shift[0], shift[1], shift[2]);
  }

  // The determinant is the product of the diagonal of the factors, with the sign of the exchanges.
  double determinant = solver.Parity();
  for (int i = 0; i < 3; ++i)
    determinant *= stiffness[i][i];
  std::printf("determinant %g\n", determinant);

  // A row of zeros has no solution, and the result says so.
  double loose[2][2] = {{1.0, 1.0}, {0.0, 0.0}};
  double* looseRows[2] = {loose[0], loose[1]};
  double b[2] = {1.0, 1.0}, x[2] = {-1.0, -1.0};
  solver.SetMatrix(looseRows, 2);
  if (!solver.Solve(b, x)) {
    std::printf("singular: %s, and x is still (%g, %g)\n", solver.IsSingular() ? "yes" : "no", x[0],
                x[1]);
  }
}
