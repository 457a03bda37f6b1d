"""A headless Chromium, as the tests use it."""

from selenium.webdriver import ActionChains, Chrome, ChromeOptions, Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.actions.action_builder import ActionBuilder
from selenium.webdriver.common.actions.wheel_input import ScrollOrigin

FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
         "--disable-background-networking --disable-component-update --disable-sync "
         "--window-size=1200,800").split()


class Browser(Chrome):
    """Use it in a `with` statement; it ends with its block."""

    run = Chrome.execute_script

    def __init__(self):
        options = ChromeOptions()
        for flag in FLAGS:
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        super().__init__(service=Service("chromedriver"), options=options)

    def open(self, path):
        self.get(f"file://{path}")
        self.settle()

    def settle(self):
        """Waits until two frames have been drawn."""
        self.execute_async_script("""
            const done = arguments[0];
            requestAnimationFrame(() => requestAnimationFrame(() => done(0)));""")

    def press(self, *keys):
        ActionChains(self).send_keys(*keys).perform()
        self.settle()

    def drag(self, *ways, kind="mouse", shift=False):
        """Moves one pointer for each way, all at once: pressed from its first place to its last."""
        actions = ActionBuilder(self, duration=0)
        if shift:
            ActionChains(self).key_down(Keys.SHIFT).perform()
        for number, (begin, *_, end) in enumerate(ways):
            pointer = actions.add_pointer_input(kind, f"{kind}{number}")
            pointer.create_pointer_move(0, *begin)
            pointer.create_pointer_down(button=0)
            pointer.create_pointer_move(0, *end)
            pointer.create_pointer_up(0)
        actions.perform()
        ActionChains(self).key_up(Keys.SHIFT).perform()
        self.settle()

    def scroll(self, place, lines):
        origin = ScrollOrigin.from_viewport(*place)
        ActionChains(self).scroll_from_origin(origin, 0, lines).perform()
        self.settle()
