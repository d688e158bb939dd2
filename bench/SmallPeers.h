#ifndef BENCH_SMALL_PEERS_H
#define BENCH_SMALL_PEERS_H

/// Rows of libraries that have vectors, transforms, boxes or distances of their own. Each function
/// registers its rows beside ours, or nothing where the library is missing.

/// Registers rows of vectors, points and transforms.
void RegisterValuesOfGlm();
void RegisterValuesOfBullet();

/// Registers rows of points beside lines and planes, and of lines and planes.
void RegisterLinesOfGlm();
void RegisterLinesOfBullet();

/// Registers rows of distances and rotations.
void RegisterQueriesOfGlm();
void RegisterQueriesOfBullet();

/// Registers rows of boxes.
void RegisterBoxesOfGlm();
void RegisterBoxesOfBullet();

#endif
