'use strict';
// What the pages of the meeting clients have in common. Each screen is a `main` with an id. A page
// names the labels of its toggles in `labels`: for each device what its buttons say while it is on
// and while it is off.

const element = (id) => document.getElementById(id);

// Shows one screen and hides the others.
function show(screen) {
  for (const each of document.querySelectorAll('main')) each.hidden = each.id !== screen;
}

// Shows nothing but the given markup: whatever a client says once a call is over.
function showOnly(html) {
  element('notice').innerHTML = html;
  show('notice');
}

// Puts a banner over whatever screen is shown, or takes it away.
function banner(html) { element('banner').innerHTML = html; }

// Switches a device on or off; its buttons then offer the opposite.
function turn(device, on) {
  for (const button of document.querySelectorAll(`[data-device=${device}]`)) {
    const screen = button.closest('main').id;
    button.textContent = labels[screen][device][on ? 0 : 1];
    button.onclick = () => turn(device, !on);
  }
}
