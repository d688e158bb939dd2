#ifndef BENCH_QUERY_PEERS_H
#define BENCH_QUERY_PEERS_H

/// Registers the distances of points, triangles and segments by CGAL, on the inputs of
/// bench_queries.cpp. Registers nothing when CGAL was missing.
void RegisterQueriesOfCgal();

#endif
