# What a host programmer installs: the module, the platform layer, the interface headers.
