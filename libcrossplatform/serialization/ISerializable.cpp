#include <libcrossplatform/serialization/ISerializable.h>

namespace Marshal {

ISerializable::~ISerializable() = default;
IDumpSerializable::~IDumpSerializable() = default;

}  // namespace Marshal
