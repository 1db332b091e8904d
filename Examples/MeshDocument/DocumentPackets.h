// How a document lies in a packet file. The names below are the types of its packets; writer and reader agree on
// nothing else.
//
//     document   reference to its name, a text packet
//                chunk: number of material libraries (Int), their names (CString)
//                chunk: numbers in positions, weights, texture coordinates, normals (Int each)
//                chunk: references to the first mesh and the first material
//     mesh       name (CString), references to the document and the next mesh
//                chunk: references to the first and the last group
//     group      name (CString), references to the mesh and the next group
//                chunk: numbers of faces, of numbers in corners, of uses (Int each),
//                       a sub-packet for each use: reference to the material, first face, number of faces (Int)
//     material   reference to its name, a text packet; reference to the next material
//                chunk: number of users (Int), references to them
//
// The arrays follow their owners as parcels. Objects are written in an order in which most references lead forward.

#ifndef DocumentPackets_h
#define DocumentPackets_h

namespace mesh::packets {

inline constexpr char document[] = "mesh.document";
inline constexpr char mesh[] = "mesh.mesh";
inline constexpr char group[] = "mesh.group";
inline constexpr char material[] = "mesh.material";
inline constexpr char positions[] = "mesh.positions";
inline constexpr char weights[] = "mesh.weights";
inline constexpr char textureCoordinates[] = "mesh.textureCoordinates";
inline constexpr char normals[] = "mesh.normals";
inline constexpr char faceSizes[] = "mesh.faceSizes";
inline constexpr char corners[] = "mesh.corners";

} // namespace mesh::packets

#endif
