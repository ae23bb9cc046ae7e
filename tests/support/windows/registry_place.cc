#include "support/registry_place.h"

struct RegistryPlace::Before {};

RegistryPlace::RegistryPlace() = default;
RegistryPlace::~RegistryPlace() = default;
