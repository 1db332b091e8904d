#include "Commands.h"

#include "BodyWalker.h"

void check(PacketFile & file) {
    BodyVisitor nobody;
    Packet packet;
    while (file.next(packet)) {
        walkBody(file, packet, nobody);
    }
}
