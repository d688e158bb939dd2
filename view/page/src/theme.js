// Light or dark: as the system prefers, until the button is pressed.

export function useThemes(apply) {
  const prefersDark = window.matchMedia('(prefers-color-scheme: dark)');
  const button = document.getElementById('theme');
  let chosen = null;
  const show = () => {
    const theme = chosen ?? (prefersDark.matches ? 'dark' : 'light');
    document.documentElement.dataset.theme = theme;
    button.textContent = theme === 'dark' ? 'Light' : 'Dark';
    apply(theme);
  };
  prefersDark.addEventListener('change', show);
  button.addEventListener('click', () => {
    chosen = document.documentElement.dataset.theme === 'dark' ? 'light' : 'dark';
    show();
  });
  show();
}
