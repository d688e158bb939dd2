#ifndef GSL_MESH_IMPORT_PROTOCOL_H
#define GSL_MESH_IMPORT_PROTOCOL_H

/// How an import program is started and answers. Both sides are of one version of this project, on
/// one machine: numbers are as memory has them.
///
/// Arguments  in this order: the greeting; the limit of memory in bytes; the process id of the
///            caller; the path of the mesh file.
/// Streams    the standard ones are the null device. The answer goes to descriptor 3: the greeting,
///            as soon as the program runs; an error text, empty when there is none; and without an
///            error the number of warnings, the warnings, the number of corners, and the corners.
/// Texts      their number of bytes, then the bytes. Every number has 64 bits.
namespace gsl_sweep::import_protocol {

/// Changes whenever the rest does.
constexpr char kGreeting[] = "gslmesh1";

enum Argument { Greeting = 1, Memory, Caller, Path, Count };

constexpr int kAnswerDescriptor = 3;

} // namespace gsl_sweep::import_protocol

#endif
