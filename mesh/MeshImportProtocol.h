#ifndef GSL_MESH_IMPORT_PROTOCOL_H
#define GSL_MESH_IMPORT_PROTOCOL_H

/// How an import program is started and how it sends its result. Both sides have the same version
/// and run on one machine, so numbers are sent as they are in memory.
///
/// Arguments  in this order: the greeting; the limit of memory in bytes; the process id of the
///            caller; the path of the mesh file.
/// Streams    the standard streams are the null device. The result goes to descriptor 3. The
///            greeting comes first, as soon as the program runs. The error text follows, which is
///            empty without an error. Without an error the number of warnings, the warnings, the
///            number of corners, and the corners follow.
/// Texts      the number of bytes, then the bytes. Every number has 64 bits.
namespace gsl_mesh::import_protocol {

/// Changes whenever the rest of the protocol changes.
constexpr char kGreeting[] = "gslmesh1";

enum Argument { Greeting = 1, Memory, Caller, Path, Count };

constexpr int kAnswerDescriptor = 3;

} // namespace gsl_mesh::import_protocol

#endif
