'use strict';
// The microphone and the speaker, as a page uses them. Only one of each at a time.

let microphone = null;
let speaker = null;

// Records from the microphone and keeps nothing of it.
async function openMicrophone() {
  microphone = await navigator.mediaDevices.getUserMedia({audio: true});
}

// Sends silence instead of what the microphone hears, or ends that; the recording goes on.
function muteMicrophone(muted) {
  for (const track of microphone.getAudioTracks()) track.enabled = !muted;
}

// Does nothing when it is closed.
function closeMicrophone() {
  if (microphone) for (const track of microphone.getTracks()) track.stop();
  microphone = null;
}

// Gives the address of one second of a tone: one channel of 8000 samples of 16 bits.
function tone() {
  const rate = 8000, bytes = 2 * rate;
  const view = new DataView(new ArrayBuffer(44 + bytes));
  const text = (at, word) => [...word].forEach((c, i) => view.setUint8(at + i, c.charCodeAt(0)));
  text(0, 'RIFF');
  view.setUint32(4, 36 + bytes, true);
  text(8, 'WAVEfmt ');
  view.setUint32(16, 16, true);
  view.setUint16(20, 1, true);
  view.setUint16(22, 1, true);
  view.setUint32(24, rate, true);
  view.setUint32(28, 2 * rate, true);
  view.setUint16(32, 2, true);
  view.setUint16(34, 16, true);
  text(36, 'data');
  view.setUint32(40, bytes, true);
  for (let i = 0; i < rate; ++i) {
    view.setInt16(44 + 2 * i, 8000 * Math.sin(2 * Math.PI * 440 * i / rate), true);
  }
  return URL.createObjectURL(new Blob([view.buffer], {type: 'audio/wav'}));
}

// Plays a tone until it is paused.
async function play() {
  if (!speaker) {
    speaker = new Audio(tone());
    speaker.loop = true;
  }
  await speaker.play();
}

function pause() { speaker.pause(); }
