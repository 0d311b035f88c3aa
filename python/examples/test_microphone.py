"""The gains page: each step is shown and sent to the audio service at once."""
import pytest


def test_nothing_is_sent_before_the_first_step(bench):
    page = bench.page("Mic Test")
    assert page.text("txt_mic") == "Mic Analog Gain:"
    assert page.text("txt_op") == "OP  Gain:12"
    assert page.text("txt_opg") == "Pga Gain:6"
    assert page.text("txt_uplink") == "Uplink Gain: 0"
    assert bench.journal.calls("AudioService") == []


@pytest.mark.parametrize("key, label, shown, sent", [
    ("key_mic_prev", "txt_mic", "Mic Analog Gain:-1", "AudioService.setMicAnalogGain(-1, -1)"),
    ("key_mic_next", "txt_mic", "Mic Analog Gain:1", "AudioService.setMicAnalogGain(1, 1)"),
    ("key_op_prev", "txt_op", "OP Gain:9", "AudioService.configMic(9, 6, 0)"),
    ("key_op_next", "txt_op", "OP Gain:21", "AudioService.configMic(21, 6, 0)"),
    ("key_opg_prev", "txt_opg", "PGA Gain:5", "AudioService.configMic(12, 5, 0)"),
    ("key_opg_next", "txt_opg", "PGA Gain:-24", "AudioService.configMic(12, -24, 0)"),
    ("key_uplink_prev", "txt_uplink", "Uplink Gain: -1", "AudioService.configMic(12, 6, -1)"),
    ("key_uplink_next", "txt_uplink", "Uplink Gain: 1", "AudioService.configMic(12, 6, 1)"),
])
def test_one_step(bench, key, label, shown, sent):
    page = bench.page("Mic Test").press(key)
    assert page.text(label) == shown
    assert bench.journal.texts("AudioService") == [sent]


@pytest.mark.parametrize("key, presses, label, before, after", [
    ("key_mic_next", 46, "txt_mic", "Mic Analog Gain:46", "Mic Analog Gain:-24"),
    ("key_uplink_prev", 24, "txt_uplink", "Uplink Gain: -24", "Uplink Gain: 24"),
    ("key_op_next", 4, "txt_op", "OP Gain:40", "OP Gain:0"),
])
def test_gain_wraps_at_its_end(bench, key, presses, label, before, after):
    page = bench.page("Mic Test").press(key, times=presses)
    assert page.text(label) == before
    assert page.press(key).text(label) == after
