"""A 32-bit ARM machine in an emulator: made, booted, used and ended by script/arm-unit."""
