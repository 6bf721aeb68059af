"""The sound of a virtual desktop, on either server: a sink "mic" whose monitor is the default source "virtmic".

Sounds that applications play go to a sink of their own, so that nothing but the test speaks into the microphone.
"""

import enum
import shutil


class SoundServer(enum.Enum):
    INSTALLED = "installed"
    PULSEAUDIO = "pulseaudio"
    PIPEWIRE = "pipewire"

    def chosen(self) -> "SoundServer":
        if self is not SoundServer.INSTALLED:
            return self
        return SoundServer.PULSEAUDIO if shutil.which("pulseaudio") else SoundServer.PIPEWIRE


_DEVICES = (
    "load-module module-null-sink sink_name=speakers",
    # Where it may rewind, PulseAudio prepares two seconds of silence ahead, and what is played then comes that much
    # later. PipeWire ignores the option.
    "load-module module-null-sink sink_name=mic rate=16000 channels=1 norewinds=1",
    "load-module module-remap-source master=mic.monitor source_name=virtmic",
    "set-default-sink speakers",
    "set-default-source virtmic",
)

# The server listens last, so that whoever finds it finds the devices.
PULSEAUDIO_SCRIPT = "\n".join((*_DEVICES, "load-module module-native-protocol-unix", ""))

# The arguments of pactl, one call each.
PIPEWIRE_DEVICES = tuple(device.split() for device in _DEVICES)

# Leaves the machine's own devices to the user: in WirePlumber's language until version 0.4, and since 0.5.
WIREPLUMBER_CONFIG = {
    "main.lua.d/51-no-devices.lua":
        "alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\nlibcamera_monitor.enabled = false\n",
    "bluetooth.lua.d/51-no-devices.lua": "bluez_monitor.enabled = false\n",
    "wireplumber.conf.d/51-no-devices.conf":
        "wireplumber.profiles = { main = {\n"
        "    hardware.audio = disabled, hardware.bluetooth = disabled, hardware.video-capture = disabled\n} }\n",
}
