// Internal to container/: the one rule by which strings and lists pick
// positions with an index matrix.
#ifndef VELK_CONTAINER_INDEX_H
#define VELK_CONTAINER_INDEX_H

#include <vector>

struct Matrix;

// The 1-based positions an index matrix selects from a sequence of `length`:
// a real matrix of any shape, read in storage order, every value an integer
// from 1 to length (repeats allowed, in the order given). False when the
// matrix is not real or holds any other value; an empty matrix selects nothing.
bool IndexPositions(Matrix *index, int length, std::vector<int> *positions);

#endif
