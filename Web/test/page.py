#!/usr/bin/env python3
"""The page as people use it, in headless Chromium: page.py PAGE PACKAGE ROOT FOLDER [MEGABYTES].

PAGE is the built HTML file, PACKAGE the folder of the npm package, ROOT the project's folder; downloads, generated files and
screenshots go to FOLDER. The large file has MEGABYTES (100)."""
import atexit
import json
import os
import shutil
import sys
import threading
import time
import unittest
import zipfile
from functools import partial
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

PAGE, PACKAGE, ROOT, FOLDER = (os.path.abspath(path) for path in sys.argv[1:5])
MEGABYTES = int(sys.argv[5]) if len(sys.argv) > 5 else 100
SAMPLES = os.path.join(ROOT, 'Test/Samples')
DOWNLOADS, SHOTS, MADE = (os.path.join(FOLDER, name) for name in ('downloads', 'screenshots', 'made'))
CODECS = {'gbk': 'gb18030', 'big5': 'big5', 'utf8': 'utf-8', 'utf16le': 'utf-16le'}
BADGES = {'gbk': 'GBK / GB18030', 'big5': 'Big5', 'utf8': 'UTF-8', 'utf16le': 'UTF-16 LE'}
# Two bytes or four are little to judge by.
CLOSE = {'name.txt': '杜甫'.encode('gbk'), 'song.txt': '曹操'.encode('big5')}

SLOW_TASKS = '''
  self.longest = 0;
  new PerformanceObserver((list) => list.getEntries().forEach((task) => { self.longest = Math.max(self.longest, task.duration); }))
    .observe({ type: 'longtask', buffered: true });
'''


def read(*path):
    with open(os.path.join(*path), 'rb') as file:
        return file.read()


def write(name, content):
    path = os.path.join(MADE, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as file:
        file.write(content)
    return path


def start():
    options = webdriver.ChromeOptions()
    for option in ('--headless=new', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--lang=en-US',
                   '--disable-background-networking', '--disable-component-update', '--disable-sync',
                   '--disable-dev-shm-usage', '--window-size=1100,900', '--force-color-profile=srgb'):
        options.add_argument(option)
    options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
    driver = webdriver.Chrome(options=options)
    atexit.register(driver.quit)
    driver.execute_cdp_cmd('Browser.setDownloadBehavior', {'behavior': 'allow', 'downloadPath': DOWNLOADS})
    driver.execute_cdp_cmd('Page.addScriptToEvaluateOnNewDocument', {'source': SLOW_TASKS})
    return driver


class Page(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(DOWNLOADS, ignore_errors=True)
        os.makedirs(DOWNLOADS)
        self.media('light')
        driver.execute_cdp_cmd('Emulation.setDeviceMetricsOverride',
                               {'width': 1100, 'height': 900, 'deviceScaleFactor': 1, 'mobile': False})
        driver.get('file://' + PAGE)

    def tearDown(self):
        # A script that the policy refuses, an error in the page: all are faults.
        self.assertEqual([entry['message'] for entry in driver.get_log('browser')], [])

    # What a test does

    def by_id(self, name):
        return driver.find_element(By.ID, name)

    def rows(self):
        return driver.find_elements(By.CSS_SELECTOR, '#list > .file')

    def row(self, name):
        return next(row for row in self.rows() if self.text(row, 'h3').endswith(name))

    def text(self, row, selector):
        return row.find_element(By.CSS_SELECTOR, selector).text

    def give(self, paths, wait=60, control='files'):
        def found():  # on a busy machine, the protocol may still see the empty page before
            expression = f'document.getElementById("{control}")'
            return driver.execute_cdp_cmd('Runtime.evaluate', {'expression': expression})['result']

        self.wait_for(lambda: 'objectId' in found())
        driver.execute_cdp_cmd('DOM.setFileInputFiles', {'files': paths, 'objectId': found()['objectId']})
        self.wait_until_idle(wait)

    def drop(self, path, wait=60):
        data = {'items': [], 'files': [path], 'dragOperationsMask': 1}
        for kind in ('dragEnter', 'dragOver', 'drop'):
            driver.execute_cdp_cmd('Input.dispatchDragEvent', {'type': kind, 'x': 300, 'y': 300, 'data': data})
        self.wait_for(lambda: self.rows(), 30)
        self.wait_until_idle(wait)

    def wait_for(self, condition, seconds=30):
        end = time.monotonic() + seconds
        while not condition():
            self.assertLess(time.monotonic(), end, 'waited in vain')
            time.sleep(0.05)

    def wait_until_idle(self, seconds=60):
        time.sleep(0.15)
        self.wait_for(lambda: driver.execute_script('return !document.body.hasAttribute("data-busy")'), seconds)

    def downloaded(self, name, seconds=60):
        path = os.path.join(DOWNLOADS, name)
        self.wait_for(lambda: os.path.exists(path), seconds)
        return path

    def media(self, scheme):
        features = [{'name': 'prefers-color-scheme', 'value': scheme}]
        driver.execute_cdp_cmd('Emulation.setEmulatedMedia', {'features': features})

    def shoot(self, name):
        driver.save_screenshot(os.path.join(SHOTS, name + '.png'))

    def speak(self, language):
        Select(self.by_id('language')).select_by_value(language)

    def longest_task(self):
        """Milliseconds since the page was loaded or this was last asked; tasks below 50 do not count."""
        longest = driver.execute_script('return self.longest')
        block = 'const end = performance.now() + 200; setTimeout(() => { while (performance.now() < end); }, 0);'
        driver.execute_script('self.longest = 0;' + block)
        self.wait_for(lambda: driver.execute_script('return self.longest') >= 150, 5)  # one is seen
        driver.execute_script('self.longest = 0')
        return longest

    # Tests

    def test_drops_a_folder_and_saves_what_was_in_it(self):
        self.drop(SAMPLES)
        names = sorted(os.listdir(SAMPLES))
        self.assertEqual(len(self.rows()), len(names))
        expected = {}
        for name in names:
            suffix, content = name.rsplit('.', 1)[-1], read(SAMPLES, name)
            row = self.row('/' + name)
            if suffix == 'md':
                self.assertEqual(self.text(row, '.badge'), 'ASCII')
                expected['Samples/' + name] = content
            elif suffix in BADGES:
                self.assertEqual(self.text(row, '.badge'), BADGES[suffix], name)
                expected['Samples/' + name] = content.decode(CODECS[suffix]).encode()
                shown = self.text(row, '.preview').split()
                self.assertIn(shown[0], content.decode(CODECS[suffix]))
            else:
                self.assertEqual(self.text(row, '.badge'), 'Unknown', name)
        undecided = len(names) - len(expected)
        self.assertIn(f'{undecided} files are undecided', self.by_id('caveat').text)
        self.by_id('save-all').click()
        with zipfile.ZipFile(self.downloaded('utf-8.zip')) as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual({name: archive.read(name) for name in archive.namelist()}, expected)
        self.shoot('list-light-en')
        self.by_id('show-open').click()
        self.assertEqual(len(self.rows()), undecided)

    def test_saves_one_file_and_any_name(self):
        text = '\ufeff' + '漢字と仮名、한국어 and é\r\n' * 3
        paths = [write('é 中文.txt', text.encode('utf-16le')), write('a/same.txt', 'one'.encode()), write('b/same.txt', b'two')]
        self.give(paths)
        self.row('é 中文.txt').find_element(By.TAG_NAME, 'button').click()
        self.assertEqual(read(self.downloaded('é 中文.txt')), text[1:].encode())
        self.wait_until_idle()
        self.by_id('save-all').click()
        with zipfile.ZipFile(self.downloaded('utf-8.zip')) as archive:
            self.assertEqual(sorted(archive.namelist()), ['same (2).txt', 'same.txt', 'é 中文.txt'])
            self.assertEqual(archive.read('same (2).txt'), b'two')
            self.assertLess(abs(time.mktime(archive.getinfo('same.txt').date_time + (0, 0, -1)) - time.time()), 600)

    def test_a_chosen_folder_is_in_order_and_saved_whole(self):
        names = [f'tree/{number}.txt' for number in range(1, 12)] + ['tree/empty.txt']
        for name in names[::-1]:
            path = write(name, b'' if 'empty' in name else '一些文字'.encode('gbk'))
        self.give([os.path.dirname(path)], control='folder')
        self.assertEqual([self.text(row, 'h3') for row in self.rows()], names)
        self.by_id('save-all').click()
        with zipfile.ZipFile(self.downloaded('utf-8.zip')) as archive:
            self.assertEqual(archive.namelist(), names)
            self.assertEqual(archive.read('tree/empty.txt'), b'')

    def test_shows_both_readings_of_a_close_call_and_is_overruled(self):
        self.give([write(name, content) for name, content in CLOSE.items()])
        for name, content in CLOSE.items():
            row = self.row(name)
            readings = row.find_elements(By.CSS_SELECTOR, '.readings label')
            shown = {reading.find_element(By.CLASS_NAME, 'encoding').text: self.text(reading, '.sample') for reading in readings}
            self.assertEqual(len(shown), 2)
            for badge, codec in (('GBK / GB18030', 'gb18030'), ('Big5', 'big5')):
                if badge in shown:
                    self.assertEqual(shown[badge], content.decode(codec, 'replace'))
        self.assertEqual(self.by_id('show-open').text, 'To decide (2)')
        self.assertEqual(self.by_id('caveat').text, '2 close calls are saved as detected.')
        self.shoot('close-light-en')
        row = self.row('name.txt')
        row.find_element(By.CSS_SELECTOR, 'input[value=gb18030]').click()
        self.wait_until_idle()
        self.assertEqual(self.text(row, '.note'), 'Your choice')
        self.assertEqual(self.by_id('show-open').text, 'To decide (1)')
        Select(self.row('song.txt').find_element(By.TAG_NAME, 'select')).select_by_visible_text('Shift_JIS')
        self.wait_until_idle()
        self.row('song.txt').find_element(By.CSS_SELECTOR, '.actions button').click()
        self.assertEqual(read(self.downloaded('song.txt')), CLOSE['song.txt'].decode('shift_jis').encode())
        Select(self.row('song.txt').find_element(By.TAG_NAME, 'select')).select_by_index(0)
        self.wait_until_idle()
        self.assertEqual(self.by_id('show-open').text, 'To decide (1)')

    def test_knows_the_mark_of_the_other_byte_order(self):
        text = '另一种字节顺序，带有标记。\n'
        self.give([write('big.txt', b'\xfe\xff' + text.encode('utf-16be'))])
        self.assertEqual(self.text(self.row('big.txt'), '.badge'), 'UTF-16 BE')
        self.row('big.txt').find_element(By.CSS_SELECTOR, '.actions button').click()
        self.assertEqual(read(self.downloaded('big.txt')), text.encode())

    def test_says_what_would_be_lost_and_where(self):
        line = '这是一行中文，后面还有一行。'.encode('gb18030')
        broken = b'\n'.join([line, line + b'\xff', line, b'\xff' + line, line])
        whole = ('一切都好，只有一个 \ufffd 字。' * 9).encode()
        self.give([write('broken.txt', broken), write('whole.txt', whole), write('empty.txt', b'')])
        row = self.row('broken.txt')
        self.assertIn('(lines 2, 4)', self.text(row, '.loss'))
        self.assertEqual(self.text(row, '.actions button'), 'Save as UTF-8 anyway')
        self.assertIn('1 file has bytes', self.by_id('caveat').text)
        self.shoot('loss-light-en')
        self.assertEqual(self.text(self.row('whole.txt'), '.loss'), '')
        self.assertEqual(self.text(self.row('empty.txt'), '.note'), 'An empty file')

    def test_speaks_three_languages_in_light_and_dark_and_on_a_telephone(self):
        self.shoot('start-light-en')
        paths = [os.path.join(SAMPLES, name) for name in ('news-hans.gbk', 'fiction-hant.big5', 'source-hans.utf16le',
                                                          'news-hant.utf8', 'russian.windows-1251')]
        self.give([write(*item) for item in CLOSE.items()] + paths)
        for language, label in (('zh-Hans', '全部存为 ZIP'), ('zh-Hant', '全部存成 ZIP'), ('en', 'Save all (ZIP)')):
            self.speak(language)
            self.assertEqual(self.by_id('save-all').text, label)
            self.assertEqual(driver.execute_script('return document.documentElement.lang'), language)
            words = driver.execute_script('return document.body.innerText')
            self.assertNotIn('undefined', words)
            if language != 'en':
                self.assertNotIn('Save', words)
            for scheme, width in (('light', 1100), ('dark', 1100), ('light', 360), ('dark', 360)):
                self.media(scheme)
                driver.execute_cdp_cmd('Emulation.setDeviceMetricsOverride', {
                    'width': width, 'height': 900 if width > 400 else 780, 'deviceScaleFactor': 1 if width > 400 else 2,
                    'mobile': width < 400})
                self.shoot(f'{"wide" if width > 400 else "phone"}-{scheme}-{language}')
                overflow = driver.execute_script('return document.documentElement.scrollWidth > innerWidth')
                self.assertFalse(overflow, 'scrolls sideways')

    def test_needs_no_mouse_and_names_everything(self):
        self.give([write(*item) for item in CLOSE.items()])
        driver.execute_script('document.activeElement.blur()')
        seen = []
        for _ in range(20):
            driver.switch_to.active_element.send_keys(Keys.TAB)
            focus = driver.switch_to.active_element
            if focus.tag_name == 'body':
                break
            self.assertNotEqual(focus.value_of_css_property('outline-style'), 'none', 'focus is not seen')
            seen.append(focus.get_attribute('id') or focus.get_attribute('type') or focus.tag_name)
            if seen[-1] == 'radio' and seen.count('radio') == 1:
                focus.send_keys(Keys.SPACE)
                self.wait_until_idle()
                self.assertEqual(driver.switch_to.active_element, focus, 'focus is lost')
        self.assertEqual(seen[:6], ['language', 'choose-files', 'choose-folder', 'show-all', 'show-open', 'clear'])
        for control in ('radio', 'select-one', 'button'):
            self.assertGreaterEqual(seen.count(control), 2 - (control == 'button'), seen)
        self.row('name.txt').find_element(By.CSS_SELECTOR, '.actions button').send_keys(Keys.ENTER)
        self.downloaded('name.txt')
        driver.execute_cdp_cmd('Accessibility.enable', {})
        nodes = driver.execute_cdp_cmd('Accessibility.getFullAXTree', {})['nodes']
        controls = [node for node in nodes if not node.get('ignored')
                    and node['role']['value'] in ('button', 'combobox', 'radio', 'progressbar', 'group', 'navigation')]
        self.assertGreater(len(controls), 10)
        self.assertEqual([node['role'] for node in controls if not node['name']['value']], [])
        self.assertIn('status', [node['role']['value'] for node in nodes])

    def test_talks_to_nobody(self):
        reached = driver.execute_async_script('''
            const done = arguments[0];
            fetch('data:text/plain,x').then(() => done('reached'), () => done('refused'));''')
        self.assertEqual(reached, 'refused')
        self.assertEqual(len(driver.get_log('browser')), 2)  # what the refusal says, and nothing else

    def test_the_package_loads_from_a_server(self):
        class Handler(SimpleHTTPRequestHandler):
            """Also has the browser decompress the model, as some servers do with such names."""
            decompresses = False

            def end_headers(self):
                if self.decompresses and self.path.endswith('.gz'):
                    self.send_header('Content-Encoding', 'gzip')
                super().end_headers()

            def log_message(self, *_):
                pass

        server = ThreadingHTTPServer(('127.0.0.1', 0), partial(Handler, directory=PACKAGE))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        for Handler.decompresses in (False, True):
            driver.get(f'http://127.0.0.1:{server.server_port}/package.json')
            text = driver.execute_async_script('''
                const done = arguments[0];
                import('/web.js').then(({ load }) => load())
                    .then(({ decode }) => done(decode(Uint8Array.of(0xd6, 0xd0, 0xce, 0xc4, 0xce, 0xc4, 0xd7, 0xd6))), done);''')
            self.assertEqual(text, '中文文字')
        server.shutdown()
        driver.get_log('browser')  # the browser also asked for an icon, which there is not

    def test_ten_thousand_files_do_not_freeze_it(self):
        folder = os.path.join(MADE, 'many')
        contents = [read(SAMPLES, name) for name in sorted(os.listdir(SAMPLES))]
        for i in range(10000):
            write(f'many/{i % 10}/{i:05}.txt', contents[i % len(contents)])
        begin = time.monotonic()
        self.drop(folder, 300)
        took = time.monotonic() - begin
        self.assertEqual(self.by_id('show-all').text, 'All (10,000)')
        self.assertIn('10,000 files checked', self.by_id('status').text)
        self.assertEqual(self.by_id('page').text, 'Page 1 of 200')
        self.by_id('next').click()
        self.assertTrue(self.text(self.rows()[0], 'h3').endswith('.txt'))
        longest = self.longest_task()
        print(f'10,000 files: {took:.1f} s, longest task {longest:.0f} ms', file=sys.stderr)
        self.assertLess(longest, 300)
        self.by_id('save-all').click()
        with zipfile.ZipFile(self.downloaded('utf-8.zip', 300)) as archive:
            self.assertGreater(len(archive.namelist()), 8000)
        print(f'  with its archive: longest task {self.longest_task():.0f} ms', file=sys.stderr)

    def test_a_large_file_does_not_freeze_it(self):
        piece = read(SAMPLES, 'news-hans.gbk')
        path = os.path.join(MADE, 'large.txt')
        with open(path, 'wb') as file:
            for _ in range((MEGABYTES << 20) // len(piece)):
                file.write(piece)
        begin = time.monotonic()
        self.give([path], 600)
        examined = time.monotonic()
        self.row('large.txt').find_element(By.CSS_SELECTOR, '.actions button').click()
        saved = self.downloaded('large.txt', 600)
        expected, size = piece.decode('gb18030').encode(), (MEGABYTES << 20) // len(piece)
        self.wait_for(lambda: os.path.getsize(saved) == size * len(expected), 60)
        longest = self.longest_task()
        print(f'{MEGABYTES} MB: checked in {examined - begin:.1f} s, saved in {time.monotonic() - examined:.1f} s, '
              f'longest task {longest:.0f} ms', file=sys.stderr)
        self.assertLess(longest, 300)
        with open(saved, 'rb') as file:
            for _ in range(size):
                self.assertEqual(file.read(len(expected)), expected)
        os.remove(path)
        os.remove(saved)


for made in (SHOTS, MADE, DOWNLOADS):
    shutil.rmtree(made, ignore_errors=True)
    os.makedirs(made)
driver = start()
unittest.main(argv=sys.argv[:1], verbosity=2)
